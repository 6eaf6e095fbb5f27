#include "ArchiveInspection.h"
#include "OtherProcess.h"
#include "TemporaryFolder.h"
#include "UpdateError.h"
#include "ZipFile.h"

#include <gmock/gmock.h>

namespace tidemark {

using testing::HasSubstr;

class ArchiveInspectionTest : public testing::Test {
protected:
    /// Why an archive of these bytes is refused; empty when it is accepted.
    std::string refusalOf(const std::string& bytes) const
    {
        m_folder.write("update.zip", bytes);
        return refusal();
    }

    std::string refusal() const
    {
        try {
            ArchiveInspection::requireHarmless(m_folder.url("update.zip"), m_limits, m_isCancelled);
        } catch (const UpdateError& error) {
            EXPECT_EQ(error.kind(), UpdateError::Case::unpack);
            return error.what();
        }
        return {};
    }

    const TemporaryFolder m_folder;
    ArchiveInspection::Limits m_limits{.entries = 5, .unpackedBytes = 1 << 20};
    std::atomic<bool> m_isCancelled = false;
};

TEST_F(ArchiveInspectionTest, AcceptsABundle)
{
    EXPECT_EQ(refusalOf(ZipFile::bytes({ZipFile::folder("Tidemark.app"),
                  {"Tidemark.app/bin/tidemark", "program", S_IFREG | 0755},
                  {"Tidemark.app/share/with blank/x", "text"},
                  ZipFile::link("Tidemark.app/share/y", "../bin/tidemark")})),
        "");
}

TEST_F(ArchiveInspectionTest, AcceptsWhatTheArchiveToolWrites)
{
    otherProcess("cd '" + m_folder.path() + R"('
        umask 022
        mkdir -p Tidemark.app/bin
        echo text >Tidemark.app/bin/tidemark
        ln -s bin/tidemark Tidemark.app/link
        bsdtar --format zip -c -f update.zip Tidemark.app)");
    EXPECT_EQ(refusal(), "");
}

TEST_F(ArchiveInspectionTest, RefusesEveryHarmfulEntry)
{
    const struct {
        const char* name;
        std::vector<ZipFile::Entry> entries;
        const char* reason;
    } cases[] = {
        {"an absolute path", {{"/tmp/a", "x"}}, "a name is not allowed"},
        {"..", {{"../a", "x"}}, "a name is not allowed"},
        {".. within", {{"App.app/../../a", "x"}}, "a name is not allowed"},
        {"a name that is not ASCII", {{"App.app/\xc3\xa4", "x"}}, "a name is not allowed"},
        {"an escape sequence", {{"App.app/\x1b[2J", "x"}}, "a name is not allowed"},
        {"an absolute link", {ZipFile::link("App.app/a", "/etc/passwd")}, "leads out"},
        {"a link out", {ZipFile::link("App.app/a", "../../a")}, "leads out"},
        {"a link beside the bundle", {ZipFile::link("App.app/a", "../a")}, "leads out"},
        {"a link in place of the bundle", {ZipFile::link("App.app", "elsewhere")}, "leads out"},
        {"a file below a link", {ZipFile::link("App.app/a", "b"), {"App.app/a/c", "x"}},
            "below what is no folder"},
        {"a file below a file", {{"App.app/a", "x"}, {"App.app/a/c", "x"}},
            "below what is no folder"},
        {"the same name twice", {{"App.app/a", "x"}, {"App.app/a", "y"}}, "twice"},
        {"a folder and a file of one name", {ZipFile::folder("App.app/a"), {"App.app/a", "y"}},
            "twice"},
        {"a block device", {{"App.app/a", "", S_IFBLK | 0644}}, "special"},
        {"a character device", {{"App.app/a", "", S_IFCHR | 0644}}, "special"},
        {"a socket", {{"App.app/a", "", S_IFSOCK | 0644}}, "special"},
        {"setuid", {{"App.app/a", "x", S_IFREG | 04755}}, "special mode"},
        {"setgid", {{"App.app/a", "x", S_IFREG | 02755}}, "special mode"},
        {"sticky", {{"App.app/a", "x", S_IFREG | 01755}}, "special mode"},
        {"too many entries", {{"a"}, {"b"}, {"c"}, {"d"}, {"e"}, {"f"}}, "too many entries"},
        {"too large",
            {{"a", std::string(1 << 19, 'x')}, {"b", std::string(1 << 19, 'x')}, {"c", "x"}},
            "too large unpacked"},
    };
    for (const auto& each : cases)
        EXPECT_THAT(refusalOf(ZipFile::bytes(each.entries)), HasSubstr(each.reason)) << each.name;
}

TEST_F(ArchiveInspectionTest, RefusesABomb)
{
    otherProcess("cd '" + m_folder.path() + R"('
        truncate -s 64M bomb
        bsdtar --format zip -c -f update.zip bomb)");
    EXPECT_LT(m_folder.read("update.zip").size(), 100'000U);
    EXPECT_THAT(refusal(), HasSubstr("too large unpacked"));
}

TEST_F(ArchiveInspectionTest, CountsWhatIsThereAndNotWhatIsAnnounced)
{
    otherProcess("cd '" + m_folder.path() + R"('
        truncate -s 64M bomb
        bsdtar --format zip -c -f update.zip bomb)");
    // The size, 64 MiB, wherever it is announced, becomes 1.
    std::string bytes = m_folder.read("update.zip");
    const std::string size("\0\0\0\4", 4);
    int announced = 0;
    for (std::size_t at = bytes.find(size); at != std::string::npos; at = bytes.find(size, at)) {
        bytes.replace(at, size.size(), std::string("\1\0\0\0", 4));
        ++announced;
    }
    ASSERT_GT(announced, 0);
    EXPECT_NE(refusalOf(bytes), "");
}

TEST_F(ArchiveInspectionTest, RefusesOtherFormats)
{
    const struct {
        const char* name;
        const char* command;
    } cases[] = {
        {"tar", "bsdtar --format ustar -c -f update.zip a"},
        {"tar with a hard link", "ln a b; bsdtar --format ustar -c -f update.zip a b"},
        {"tar.gz", "bsdtar --format ustar -c -z -f update.zip a"},
        {"zip in gz", "bsdtar --format zip -c -f - a | gzip >update.zip"},
        {"cpio", "bsdtar --format cpio -c -f update.zip a"},
        {"7zip", "bsdtar --format 7zip -c -f update.zip a"},
        {"a zip archive after something",
            "{ echo text; bsdtar --format zip -c -f - a; } >update.zip"},
        {"nothing", ": >update.zip"},
        {"text", "echo '<html>' >update.zip"},
    };
    for (const auto& each : cases) {
        otherProcess(
            "cd '" + m_folder.path() + "' && rm -f a b && echo text >a && " + each.command);
        EXPECT_NE(refusal(), "") << each.name;
    }
}

TEST_F(ArchiveInspectionTest, RefusesATarArchiveThatBeginsLikeAZipArchive)
{
    otherProcess("cd '" + m_folder.path() + R"('
        name=$(printf 'PK\003\004')
        echo text >"$name"
        bsdtar --format ustar -c -f update.zip "$name")");
    ASSERT_TRUE(m_folder.read("update.zip").starts_with("PK\x03\x04"));
    EXPECT_NE(refusal(), "");
}

TEST_F(ArchiveInspectionTest, RefusesATornArchive)
{
    const std::string whole = ZipFile::bytes({{"App.app/a", "content"}, {"App.app/b", "more"}});
    ASSERT_EQ(refusalOf(whole), "");
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE(refusalOf(whole.substr(0, size)), "") << size << " bytes";
}

TEST_F(ArchiveInspectionTest, RefusesAContentThatWasChanged)
{
    std::string bytes = ZipFile::bytes({{"App.app/a", "content"}});
    bytes.replace(bytes.find("content"), 7, "CONTENT");
    EXPECT_NE(refusalOf(bytes), "");
}

TEST_F(ArchiveInspectionTest, EndsWhenItIsCancelled)
{
    m_folder.write("update.zip", ZipFile::bytes({{"App.app/a", "content"}}));
    m_isCancelled = true;
    EXPECT_THROW(
        ArchiveInspection::requireHarmless(m_folder.url("update.zip"), m_limits, m_isCancelled),
        std::system_error);
}

}  // namespace tidemark
