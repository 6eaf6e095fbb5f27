#include "BundleManifest.h"
#include "BundlePath.h"
#include "DecodingError.h"

#include <gmock/gmock.h>

namespace tidemark {

using testing::HasSubstr;

namespace {

const std::string hash(64, 'a');

std::string file(const std::string& path, const std::string& mode = "644")
{
    return R"({"mode": ")" + mode + R"(", "path": ")" + path + R"(", "sha256": ")" + hash + R"("})";
}

std::string link(const std::string& path, const std::string& target)
{
    return R"({"path": ")" + path + R"(", "target": ")" + target + R"("})";
}

std::string manifest(const std::string& files)
{
    return R"({"teamIdentifier": "TEAM000001", "version": "1.3", "files": [)" + files + "]}";
}

std::string refusalOf(const std::string& text)
{
    try {
        BundleManifest::parse(text);
    } catch (const DecodingError& error) {
        return error.what();
    }
    return {};
}

}  // namespace

TEST(BundleManifest, NamesFilesAndLinks)
{
    const BundleManifest read = BundleManifest::parse(
        manifest(file("bin/tidemark", "755") + ',' + link("share/a/b", "../../bin/tidemark")));

    BundleManifest::File program{.mode = 0755};
    program.sha256.fill(0xaa);
    const BundleManifest expected{.teamIdentifier = "TEAM000001",
        .version = "1.3",
        .entries = {
            {"bin/tidemark", program}, {"share/a/b", BundleManifest::Link{"../../bin/tidemark"}}}};
    EXPECT_EQ(read, expected);
}

TEST(BundleManifest, RefusesWhatIsNotWhole)
{
    const std::string whole = manifest(file("a"));
    ASSERT_EQ(refusalOf(whole), "");
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE(refusalOf(whole.substr(0, size)), "") << size << " bytes";
}

TEST(BundleManifest, RefusesWhatIsHuge)
{
    EXPECT_THAT(refusalOf(manifest(file("a")) + std::string(BundleManifest::mostBytes, ' ')),
        HasSubstr("too large"));
    std::string files = link("0", "x");
    for (std::size_t count = 1; count <= BundleManifest::mostEntries; ++count)
        files += ',' + link(std::to_string(count), "x");
    EXPECT_THAT(refusalOf(manifest(files)), HasSubstr("too many files"));
}

TEST(BundleManifest, RefusesEverythingElse)
{
    const struct {
        const char* name;
        std::string text;
        const char* reason;
    } cases[] = {
        {"no object", "[]", "expected an object"},
        {"no team", R"({"version": "1", "files": []})", "teamIdentifier"},
        {"no version", R"({"teamIdentifier": "T", "files": []})", "version"},
        {"no files", R"({"teamIdentifier": "T", "version": "1"})", "files"},
        {"a version that is a number", R"({"teamIdentifier": "T", "version": 1, "files": []})",
            "version: expected a string"},
        {"the same file twice", manifest(file("a") + ',' + file("a")), "twice"},
        {"a file and a link of one name", manifest(file("a") + ',' + link("a", "b")), "twice"},
        {"a file below a file", manifest(file("a") + ',' + file("a/b")), "below another"},
        {"a file below a link", manifest(link("a", "x") + ',' + file("a/b/c")), "below another"},
        {"..", manifest(file("../a")), "no path inside"},
        {".. within", manifest(file("a/../b")), "no path inside"},
        {"absolute", manifest(file("/bin/sh")), "no path inside"},
        {"empty", manifest(file("")), "no path inside"},
        {"the manifest itself", manifest(file("Signature/manifest.json")), "cannot be signed"},
        {"the signature's folder", manifest(file("Signature")), "cannot be signed"},
        {"a link out", manifest(link("a/b", "../../c")), "leads out"},
        {"an absolute link", manifest(link("a", "/bin/sh")), "leads out"},
        {"a link with a mode", manifest(R"({"path": "a", "target": "b", "mode": "644"})"),
            "neither mode nor content"},
        {"setuid", manifest(file("a", "4755")), "octal"},
        {"writable by others", manifest(file("a", "666")), "no mode"},
        {"writable by the group", manifest(file("a", "775")), "no mode"},
        {"not readable", manifest(file("a", "100")), "no mode"},
        {"a mode that is no number", manifest(file("a", "rwx")), "octal"},
        {"a mode with a sign", manifest(file("a", "-44")), "octal"},
        {"a short hash", manifest(R"({"path": "a", "mode": "644", "sha256": "aa"})"),
            "hexadecimal"},
        {"no hash", manifest(R"({"path": "a", "mode": "644"})"), "sha256"},
        {"a hash that is none",
            manifest(
                R"({"path": "a", "mode": "644", "sha256": ")" + std::string(64, 'x') + R"("})"),
            "hexadecimal"},
    };
    for (const auto& each : cases)
        EXPECT_THAT(refusalOf(each.text), HasSubstr(each.reason)) << each.name;
}

TEST(BundlePath, IsRelativeAndPlain)
{
    for (const char* safe : {"a", "a/b", "Tidemark.app/share/with blank/x", "...", "a..b", "-rf"})
        EXPECT_TRUE(BundlePath::isSafe(safe)) << safe;
    const std::string longName(256, 'a');
    std::string deep = "a";
    for (int depth = 0; depth < 40; ++depth)
        deep += "/a";
    for (const std::string& unsafe :
        {std::string{}, std::string{"/a"}, std::string{"a/"}, std::string{"a//b"}, std::string{"."},
            std::string{".."}, std::string{"a/./b"}, std::string{"a/.."}, std::string{"a\\b"},
            std::string{"a\nb"}, std::string{"\x1b[2J"}, std::string{"\xc3\xa4"},
            std::string{"a\0b", 3}, longName, deep, std::string(2000, 'a')})
        EXPECT_FALSE(BundlePath::isSafe(unsafe)) << unsafe;
}

TEST(BundlePath, ALinkStaysInside)
{
    const struct {
        const char* path;
        const char* target;
        int depth;
        bool expected;
    } cases[] = {
        {"a", "b", 0, true},
        {"a", "b/c", 0, true},
        {"x/a", "../b", 0, true},
        {"x/a", "..", 0, true},
        {"a", "..", 0, false},
        {"a", "../b", 0, false},
        {"x/a", "../../b", 0, false},
        {"x/a", "y/../../b", 0, false},
        {"x/a", "y/..", 0, false},
        {"a", "/b", 0, false},
        {"a", "", 0, false},
        {"a", ".", 0, false},
        {"a", "b/", 0, false},
        {"App.app/a", "../b", 1, false},
        {"App.app/x/a", "../b", 1, true},
        {"a", "b", 1, false},
    };
    for (const auto& each : cases)
        EXPECT_EQ(BundlePath::staysInside(each.path, each.target, each.depth), each.expected)
            << each.path << " -> " << each.target;
}

}  // namespace tidemark
