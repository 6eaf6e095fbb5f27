#include "MinisignSignature.h"
#include "OtherProcess.h"
#include "TemporaryFolder.h"
#include "TestDeveloper.h"

#include <gtest/gtest.h>

namespace tidemark {

namespace {

constexpr std::string_view content = "the manifest";

bool accepts(std::string_view signature, const TestDeveloper& developer,
    std::string_view signedContent = content)
{
    const auto key = MinisignPublicKey::parse(developer.identity().publicKey);
    const auto parsed = MinisignSignature::parse(signature);
    return key && parsed && parsed->isValid(signedContent, *key);
}

}  // namespace

TEST(MinisignSignature, IsAcceptedFromTheOwnerOfTheKey)
{
    const TestDeveloper developer;
    EXPECT_TRUE(accepts(developer.sign(content), developer));
    EXPECT_TRUE(accepts(developer.sign(content, "ED", ""), developer));
    EXPECT_TRUE(accepts(developer.sign(""), developer, ""));
}

TEST(MinisignSignature, IsReadAsTheProgramMinisignWritesIt)
{
    const TemporaryFolder folder;
    folder.write("content", content);
    otherProcess("cd '" + folder.path() + "'\n"
        + "minisign -G -W -p key.pub -s key.sec >log && minisign -S -s key.sec -m content >>log");
    const std::string file = folder.read("key.pub");
    const std::size_t line = file.find('\n') + 1;
    const auto key =
        MinisignPublicKey::parse(std::string_view{file}.substr(line, file.find('\n', line) - line));
    const auto signature = MinisignSignature::parse(folder.read("content.minisig"));

    ASSERT_TRUE(key && signature);
    EXPECT_TRUE(signature->isValid(content, *key));
    EXPECT_TRUE(signature->trustedComment.starts_with("timestamp:")) << signature->trustedComment;
    EXPECT_FALSE(signature->isValid("another manifest", *key));
}

TEST(MinisignSignature, IsRefusedFromAnother)
{
    const TestDeveloper developer;
    TestDeveloper stranger;
    EXPECT_FALSE(accepts(stranger.sign(content), developer));
    stranger.takeKeyIDOf(developer);
    EXPECT_FALSE(accepts(stranger.sign(content), developer));
}

TEST(MinisignSignature, IsRefusedWithTheNameOfAnotherKey)
{
    const TestDeveloper developer;
    TestDeveloper renamed = developer;
    renamed.takeKeyIDOf(TestDeveloper{});
    EXPECT_FALSE(accepts(renamed.sign(content), developer));
}

TEST(MinisignSignature, IsRefusedInTheLegacyForm)
{
    const TestDeveloper developer;
    EXPECT_FALSE(accepts(developer.sign(content, "Ed"), developer));
}

TEST(MinisignSignature, IsRefusedForAnotherContent)
{
    const TestDeveloper developer;
    const std::string signature = developer.sign(content);
    EXPECT_FALSE(accepts(signature, developer, "the manifesT"));
    EXPECT_FALSE(accepts(signature, developer, ""));
}

TEST(MinisignSignature, IsRefusedWhenAnyByteWasChanged)
{
    const TestDeveloper developer;
    const std::string whole = developer.sign(content);
    // The untrusted comment may be anything.
    for (std::size_t at = whole.find('\n'); at < whole.size(); ++at) {
        std::string changed = whole;
        changed[at] = changed[at] == 'A' ? 'B' : 'A';
        EXPECT_FALSE(accepts(changed, developer)) << "byte " << at;
    }
}

TEST(MinisignSignature, IsRefusedWhenItIsCutAtAnyByte)
{
    const TestDeveloper developer;
    const std::string whole = developer.sign(content);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(accepts(whole.substr(0, size), developer)) << size << " bytes";
}

TEST(MinisignSignature, IsRefusedWithSomethingAfterIt)
{
    const TestDeveloper developer;
    const std::string whole = developer.sign(content);
    EXPECT_FALSE(accepts(whole + '\n', developer));
    EXPECT_FALSE(accepts(whole + whole, developer));
    EXPECT_FALSE(MinisignSignature::parse(
        "untrusted comment: " + std::string(MinisignSignature::mostBytes, 'x') + whole));
}

TEST(MinisignPublicKey, IsOneLineOfBase64)
{
    const std::string key = TestDeveloper{}.identity().publicKey;
    EXPECT_TRUE(MinisignPublicKey::parse(key));
    for (const std::string& wrong : {std::string{}, key + '\n', ' ' + key, key.substr(4),
             key + "AAAA", "Z" + key.substr(1), std::string{"RWQ"}})
        EXPECT_FALSE(MinisignPublicKey::parse(wrong)) << wrong;
}

}  // namespace tidemark
