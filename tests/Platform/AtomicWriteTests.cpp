#include "AtomicWrite.h"

#include "PrivateMounts.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace tidemark {

using testing::ElementsAre;

static void write(const FileURL& url, std::string_view content)
{
    const std::string_view pieces[] = {content};
    AtomicWrite::write(url, pieces, {});
}

static int errorOf(const FileURL& url, std::string_view content)
{
    try {
        write(url, content);
    } catch (const std::filesystem::filesystem_error& error) {
        return error.code().value();
    }
    return 0;
}

static mode_t modeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST(AtomicWrite, ManyPiecesArriveInOrder)
{
    const TemporaryFolder folder;
    // More than one system call takes.
    std::vector<std::string> texts;
    std::string whole;
    for (int i = 0; i < 5'000; ++i) {
        texts.push_back(i % 7 == 0 ? "" : std::to_string(i) + ',');
        whole += texts.back();
    }
    const std::vector<std::string_view> pieces{texts.begin(), texts.end()};
    AtomicWrite::write(folder.url("file"), pieces, {});
    EXPECT_EQ(folder.read("file"), whole);
    EXPECT_THAT(folder.names(), ElementsAre("file"));
}

TEST(AtomicWrite, NewFilesAreForTheUserAloneAndOldOnesKeepTheirMode)
{
    const TemporaryFolder folder;
    write(folder.url("file"), "new");
    EXPECT_EQ(modeOf(folder.path("file")), 0600U);
    for (const mode_t mode : {0644U, 0600U, 0400U, 0755U}) {
        std::filesystem::permissions(folder.path("file"), std::filesystem::perms{mode});
        write(folder.url("file"), "again");
        EXPECT_EQ(modeOf(folder.path("file")), mode);
    }
}

TEST(AtomicWrite, AReaderKeepsTheOldContentWhole)
{
    const TemporaryFolder folder;
    folder.write("file", "old");
    std::filesystem::create_hard_link(folder.path("file"), folder.path("reader"));
    write(folder.url("file"), "new content");
    EXPECT_EQ(folder.read("reader"), "old");
    EXPECT_EQ(folder.read("file"), "new content");
}

TEST(AtomicWrite, AFailureLeavesTheOldContentAndNothingElse)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    folder.write("in/file", "old");
    std::filesystem::permissions(folder.path("in"), std::filesystem::perms{0555});
    EXPECT_EQ(errorOf(folder.url("in/file"), "new"), EACCES);
    EXPECT_EQ(folder.read("in/file"), "old");
    EXPECT_THAT(folder.names("in"), ElementsAre("file"));
}

TEST(AtomicWrite, AFailureNamesTheFileThatWasToBeWritten)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    folder.write("in/file", "old");
    folder.makeLink("link", "in/file");
    std::filesystem::permissions(folder.path("in"), std::filesystem::perms{0555});
    for (const char* name : {"in/file", "in/new", "link"}) {
        SCOPED_TRACE(name);
        try {
            write(folder.url(name), "new");
            FAIL();
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.path1(), folder.path(name));
        }
    }
}

TEST(AtomicWrite, AFullDiskLeavesTheOldContentAndNothingElse)
{
    const TemporaryFolder folder;
    testWithPrivateMounts([&] {
        mountMemory(folder.makeFolder("small").path(), "size=64k");
        folder.write("small/file", "old");
        EXPECT_EQ(errorOf(folder.url("small/file"), std::string(1'000'000, 'x')), ENOSPC);
        EXPECT_EQ(folder.read("small/file"), "old");
        EXPECT_THAT(folder.names("small"), ElementsAre("file"));
    });
}

TEST(AtomicWrite, ANameWithoutRoomForATemporaryOneIsRefused)
{
    const TemporaryFolder folder;
    const std::string name(250, 'x');
    folder.write(name, "old");
    EXPECT_EQ(errorOf(folder.url(name), "new"), ENAMETOOLONG);
    EXPECT_EQ(folder.read(name), "old");
}

TEST(AtomicWrite, LinksInACircleAreRefused)
{
    const TemporaryFolder folder;
    folder.makeLink("a", "b");
    folder.makeLink("b", "a");
    EXPECT_EQ(errorOf(folder.url("a"), "new"), ELOOP);
    EXPECT_THAT(folder.names(), ElementsAre("a", "b"));
}

TEST(AtomicWrite, TemporaryNamesAreRecognised)
{
    struct Row {
        const char* name;
        bool isTemporary;
    };
    const Row rows[] = {{".a.json.0123456789abcdef.tmp", true},
        {".a.json.0123456789ABCDEF.tmp", false}, {".a.json.0123456789abcde.tmp", false},
        {".a.json.0123456789abcdef0.tmp", false}, {".a.json.0123456789abcdeg.tmp", false},
        {".b.json.0123456789abcdef.tmp", false}, {"a.json.0123456789abcdef.tmp", false},
        {".a.json.0123456789abcdef", false}, {".a.json.tmp", false}, {".a.json..tmp", false},
        {"a.json", false}, {"", false}};
    for (const Row& row : rows)
        EXPECT_EQ(AtomicWrite::isTemporaryName(row.name, "a.json"), row.isTemporary) << row.name;
}

TEST(AtomicWrite, OnlyLeftoversOfTheNamedFileAreRemoved)
{
    const TemporaryFolder folder;
    for (const char* name : {".a.0123456789abcdef.tmp", ".b.0123456789abcdef.tmp", "a", "a.tmp"})
        folder.write(name, "");
    AtomicWrite::removeLeftovers(folder.url(), "a", {});
    EXPECT_THAT(folder.names(), ElementsAre(".b.0123456789abcdef.tmp", "a", "a.tmp"));
    AtomicWrite::removeLeftovers(folder.url("none"), "a", {});
}

}  // namespace tidemark
