#include "BundleVerifier.h"
#include "OtherProcess.h"
#include "TestBundle.h"
#include "UpdateError.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>
#include <functional>

namespace tidemark {

using testing::HasSubstr;

class BundleVerifierTest : public testing::Test {
protected:
    std::string refusalOf(const FileURL& bundle, const std::string& announced = "1.3",
        const std::string& running = "1.2") const
    {
        try {
            BundleVerifier{m_developer.identity(), running}.verify(
                bundle, announced, m_isCancelled);
        } catch (const UpdateError& error) {
            EXPECT_EQ(error.kind(), UpdateError::Case::badSignature);
            return error.what();
        }
        return {};
    }

    const TestDeveloper m_developer;
    const TemporaryFolder m_folder;
    std::atomic<bool> m_isCancelled = false;
};

TEST_F(BundleVerifierTest, AcceptsWhatTheDeveloperHasSigned)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    EXPECT_EQ(refusalOf(bundle.url()), "");
}

TEST_F(BundleVerifierTest, RefusesAnotherKey)
{
    TestDeveloper stranger;
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", stranger};
    EXPECT_THAT(refusalOf(bundle.url()), HasSubstr("has not signed"));
    stranger.takeKeyIDOf(m_developer);
    bundle.sign(stranger, "1.3");
    EXPECT_THAT(refusalOf(bundle.url()), HasSubstr("has not signed"));
}

TEST_F(BundleVerifierTest, RefusesEverythingWithoutAKey)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    EXPECT_THROW((BundleVerifier{{.publicKey = "", .teamIdentifier = "TEAM000001"}, "1.2"}.verify(
                     bundle.url(), "1.3", m_isCancelled)),
        UpdateError);
}

TEST_F(BundleVerifierTest, RefusesAnotherTeam)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    bundle.signText(m_developer, bundle.manifest("TEAM000002", "1.3"));
    EXPECT_THAT(refusalOf(bundle.url()), HasSubstr("another team"));
}

TEST_F(BundleVerifierTest, RefusesAnotherVersionThanAnnounced)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    EXPECT_THAT(refusalOf(bundle.url(), "1.4"), HasSubstr("not 1.4"));
    EXPECT_THAT(refusalOf(bundle.url(), "1.3.0"), HasSubstr("not 1.3.0"));
}

TEST_F(BundleVerifierTest, RefusesAVersionThatIsNotNewer)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    for (const char* running : {"1.3", "1.3.0", "1.4", "2"})
        EXPECT_THAT(refusalOf(bundle.url(), "1.3", running), HasSubstr("not newer")) << running;
}

TEST_F(BundleVerifierTest, RefusesABundleThatIsNotAsItWasSigned)
{
    using Bundle = const TestBundle&;
    namespace fs = std::filesystem;
    const struct {
        const char* name;
        std::function<void(Bundle)> damage;
        const char* reason;
    } cases[] = {
        {"a changed file", [](Bundle b) { b.write("share/doc/copyright", "OURS"); },
            "another content"},
        {"a changed program", [](Bundle b) { b.write("bin/tidemark", "#!/bin/sh\n", 0755); },
            "another content"},
        {"a longer file", [](Bundle b) { b.write("share/doc/copyright", "ours\n"); },
            "another content"},
        {"an emptied file", [](Bundle b) { b.write("share/doc/copyright", ""); },
            "another content"},
        {"a missing file", [](Bundle b) { fs::remove(b.path("share/doc/copyright")); }, "missing"},
        {"an additional file", [](Bundle b) { b.write("share/more", "x"); }, "one too many"},
        {"an additional file in a folder of its own",
            [](Bundle b) {
                b.write("lib/x.so", "x");
                ::chmod(b.path("lib").c_str(), 0755);
            },
            "one too many"},
        {"an additional file beside the signature", [](Bundle b) { b.write("Signature/x", ""); },
            "one too many"},
        {"an empty folder",
            [](Bundle b) {
                fs::create_directory(b.path("share/empty"));
                fs::permissions(b.path("share/empty"), fs::perms{0755});
            },
            "empty folder"},
        {"an additional link", [](Bundle b) { fs::create_symlink("doc", b.path("share/l")); },
            "one too many"},
        {"a changed mode", [](Bundle b) { ::chmod(b.path("bin/tidemark").c_str(), 0700); },
            "another mode"},
        {"setuid", [](Bundle b) { ::chmod(b.path("bin/tidemark").c_str(), 04755); },
            "another mode"},
        {"a folder that others can write to",
            [](Bundle b) { ::chmod(b.path("bin").c_str(), 0777); }, "another mode"},
        {"a folder with setgid", [](Bundle b) { ::chmod(b.path("share").c_str(), 02755); },
            "another mode"},
        {"a bundle that others can write to", [](Bundle b) { ::chmod(b.path("").c_str(), 0775); },
            "another mode"},
        {"a manifest of another mode",
            [](Bundle b) { ::chmod(b.path("Signature/manifest.json").c_str(), 0666); },
            "another mode"},
        {"a link that leads elsewhere",
            [](Bundle b) {
                fs::remove(b.path("share/doc/link"));
                fs::create_symlink("copyright", b.path("share/doc/link"));
            },
            "leads elsewhere"},
        {"a file in place of a link",
            [](Bundle b) {
                fs::remove(b.path("share/doc/link"));
                b.write("share/doc/link", "text");
            },
            "Invalid argument"},
        {"a link in place of a file",
            [](Bundle b) {
                fs::rename(b.path("share/doc/copyright"), b.path("../copyright"));
                fs::create_symlink("../../../copyright", b.path("share/doc/copyright"));
            },
            "Too many levels"},
        {"a link in place of a folder",
            [](Bundle b) {
                fs::rename(b.path("share/doc"), b.path("../doc"));
                fs::create_directory_symlink("../../doc", b.path("share/doc"));
            },
            "one too many"},
        {"a pipe in place of a file",
            [](Bundle b) {
                fs::remove(b.path("share/doc/copyright"));
                ::mkfifo(b.path("share/doc/copyright").c_str(), 0644);
            },
            "is no file"},
        {"a second name",
            [](Bundle b) {
                fs::create_hard_link(b.path("share/doc/copyright"), b.path("../second"));
            },
            "second name"},
        {"a torn manifest",
            [](Bundle b) { fs::resize_file(b.path("Signature/manifest.json"), 100); },
            "has not signed"},
        {"a huge manifest",
            [](Bundle b) { fs::resize_file(b.path("Signature/manifest.json"), 5 << 20); },
            "too large"},
        {"a huge signature",
            [](Bundle b) { fs::resize_file(b.path("Signature/manifest.json.minisig"), 5000); },
            "too large"},
        {"no manifest", [](Bundle b) { fs::remove(b.path("Signature/manifest.json")); }, "No such"},
        {"no signature", [](Bundle b) { fs::remove(b.path("Signature/manifest.json.minisig")); },
            "No such"},
        {"no folder for the signature", [](Bundle b) { fs::remove_all(b.path("Signature")); },
            "No such"},
        {"a manifest that is a link",
            [](Bundle b) {
                fs::rename(b.path("Signature/manifest.json"), b.path("../manifest"));
                fs::create_symlink("../../manifest", b.path("Signature/manifest.json"));
            },
            "Too many levels"},
        {"a manifest that is a pipe",
            [](Bundle b) {
                fs::remove(b.path("Signature/manifest.json"));
                ::mkfifo(b.path("Signature/manifest.json").c_str(), 0644);
            },
            "is no file"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        const TemporaryFolder folder;
        const TestBundle bundle{folder, "Tidemark.app", "1.3", m_developer};
        ASSERT_EQ(refusalOf(bundle.url()), "");
        each.damage(bundle);
        EXPECT_THAT(refusalOf(bundle.url()), HasSubstr(each.reason));
    }
}

TEST_F(BundleVerifierTest, RefusesASignedManifestThatIsNoBundles)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    const std::string hash(64, '0');
    const auto withFiles = [](const std::string& files) {
        return R"({"teamIdentifier": "TEAM000001", "version": "1.3", "files": [)" + files + "]}";
    };
    const struct {
        std::string manifest;
        const char* reason;
    } cases[] = {
        {"", "manifest.json"},
        {"{}", "teamIdentifier"},
        {withFiles(""), "no program"},
        {withFiles(R"({"path": "../a", "mode": "644", "sha256": ")" + hash + "\"}"), "no path"},
        {withFiles(R"({"path": "a", "target": "/"})"), "leads out"},
    };
    for (const auto& each : cases) {
        bundle.signText(m_developer, each.manifest);
        EXPECT_THAT(refusalOf(bundle.url()), HasSubstr(each.reason)) << each.manifest;
    }
}

TEST_F(BundleVerifierTest, RefusesAnInfoOfAnotherVersion)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    for (const char* info : {R"({"CFBundleShortVersionString": "1.4"})",
             R"({"CFBundleShortVersionString": 1.3})", "{}", "no JSON"}) {
        bundle.write("Info.json", info);
        bundle.sign(m_developer, "1.3");
        EXPECT_THAT(refusalOf(bundle.url()), HasSubstr("Info.json")) << info;
    }
}

TEST_F(BundleVerifierTest, RefusesABundleWithoutAProgram)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    ASSERT_EQ(::chmod(bundle.path("bin/tidemark").c_str(), 0644), 0);
    bundle.sign(m_developer, "1.3");
    EXPECT_THAT(refusalOf(bundle.url()), HasSubstr("no program"));
}

TEST_F(BundleVerifierTest, RefusesWhatIsNoFolder)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    EXPECT_NE(refusalOf(m_folder.write("File.app", "")), "");
    EXPECT_NE(refusalOf(m_folder.makeLink("Link.app", "Tidemark.app")), "");
    EXPECT_NE(refusalOf(m_folder.url("Missing.app")), "");
}

TEST_F(BundleVerifierTest, EndsWhenItIsCancelled)
{
    const TestBundle bundle{m_folder, "Tidemark.app", "1.3", m_developer};
    m_isCancelled = true;
    EXPECT_THROW(
        (BundleVerifier{m_developer.identity(), "1.2"}.verify(bundle.url(), "1.3", m_isCancelled)),
        std::system_error);
}

}  // namespace tidemark
