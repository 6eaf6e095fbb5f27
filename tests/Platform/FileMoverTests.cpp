#include "FileMover.h"

#include "HeldMove.h"
#include "PrivateMounts.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace tidemark {

using FileMover::Result;

namespace {

struct Way {
    const char* name;
    Result (*moveHeld)(const Move& move);
    bool movesFolders;

    Result move(const FileURL& from, const FileURL& to) const
    {
        return moveHeld(*HeldMove{from, to});
    }
};

std::string nameOfWay(const testing::TestParamInfo<Way>& info)
{
    return info.param.name;
}

int errorOf(const Way& way, const FileURL& from, const FileURL& to)
{
    try {
        way.move(from, to);
    } catch (const std::filesystem::filesystem_error& error) {
        // What concerns a folder alone names no more than that.
        if (!error.path2().empty()) {
            EXPECT_EQ(error.path1(), from.path());
            EXPECT_EQ(error.path2(), to.path());
        } else {
            EXPECT_TRUE(
                error.path1() == from.parent().path() || error.path1() == to.parent().path());
        }
        return error.code().value();
    }
    return 0;
}

ino_t inode(const FileURL& url)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(url.path().c_str(), &status), 0);
    return status.st_ino;
}

Result moveAnyWay(const Move& move)
{
    FileMover::move(move);
    return Result::moved;
}

}  // namespace

class MovingWithinAFileSystem : public testing::TestWithParam<Way> {
protected:
    TemporaryFolder m_folder;
};

INSTANTIATE_TEST_SUITE_P(FileMover, MovingWithinAFileSystem,
    testing::Values(Way{"ByRename", FileMover::moveByRename, true},
        Way{"ByLink", FileMover::moveByLink, false},
        Way{"ByPlaceholder", FileMover::moveByPlaceholder, true},
        Way{"WithinFileSystem", FileMover::moveWithinFileSystem, true},
        Way{"AnyWay", moveAnyWay, true}),
    nameOfWay);

TEST_P(MovingWithinAFileSystem, TakesTheFileItself)
{
    const FileURL from = m_folder.write("from", "content");
    const ino_t before = inode(from);
    EXPECT_EQ(GetParam().move(from, m_folder.url("to")), Result::moved);
    EXPECT_THAT(m_folder.names(), testing::ElementsAre("to"));
    EXPECT_EQ(inode(m_folder.url("to")), before);
    EXPECT_EQ(m_folder.read("to"), "content");
}

TEST_P(MovingWithinAFileSystem, TakesALinkAndNotItsTarget)
{
    m_folder.write("target", "content");
    for (const char* target : {"target", "nowhere"}) {
        const FileURL from = m_folder.makeLink("from", target);
        EXPECT_EQ(GetParam().move(from, m_folder.url("to")), Result::moved);
        EXPECT_FALSE(m_folder.holds("from"));
        EXPECT_EQ(std::filesystem::read_symlink(m_folder.path("to")), target);
        std::filesystem::remove(m_folder.path("to"));
    }
    EXPECT_EQ(m_folder.read("target"), "content");
}

TEST_P(MovingWithinAFileSystem, TakesAFolderOrOffersNot)
{
    m_folder.write("from/file", "content");
    const Result result = GetParam().move(m_folder.url("from"), m_folder.url("to"));
    EXPECT_EQ(result, GetParam().movesFolders ? Result::moved : Result::notOffered);
    EXPECT_EQ(m_folder.read(GetParam().movesFolders ? "to/file" : "from/file"), "content");
    EXPECT_EQ(m_folder.names().size(), 1U);
}

TEST_P(MovingWithinAFileSystem, NeverReplaces)
{
    const FileURL from = m_folder.write("from", "precious");
    m_folder.write("file", "mine");
    m_folder.write("empty", "");
    m_folder.makeFolder("folder");
    m_folder.makeLink("link", "file");
    m_folder.makeLink("dangling", "nowhere");
    std::filesystem::create_hard_link(from.path(), m_folder.path("same"));
    const auto before = m_folder.names();

    for (const char* occupant : {"file", "empty", "folder", "link", "dangling", "same", "from"}) {
        EXPECT_EQ(errorOf(GetParam(), from, m_folder.url(occupant)), EEXIST) << occupant;
        EXPECT_EQ(m_folder.names(), before) << occupant;
    }
    EXPECT_EQ(m_folder.read("from"), "precious");
    EXPECT_EQ(m_folder.read("file"), "mine");
}

TEST_P(MovingWithinAFileSystem, LeavesEverythingAsItWasOnFailure)
{
    const FileURL from = m_folder.write("in/from", "content");
    struct Row {
        const char* from;
        std::string to;
        int error;
    };
    const Row rows[] = {{"in/none", "to", ENOENT}, {"in/from", "none/to", ENOENT},
        {"in/from", "in/from/to", ENOTDIR}, {"in/from", std::string(256, 'x'), ENAMETOOLONG}};
    for (const Row& row : rows) {
        EXPECT_EQ(errorOf(GetParam(), m_folder.url(row.from), m_folder.url(row.to)), row.error)
            << row.from << " to " << row.to;
        EXPECT_THAT(m_folder.names(), testing::ElementsAre("in"));
        EXPECT_EQ(m_folder.read("in/from"), "content");
    }
}

TEST_P(MovingWithinAFileSystem, LeavesEverythingAsItWasWhereNothingMayBeRemoved)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    const FileURL from = folder.write("locked/from", "content");
    folder.makeFolder("out");
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0555});

    EXPECT_EQ(errorOf(GetParam(), from, folder.url("out/to")), EACCES);

    EXPECT_EQ(folder.read("locked/from"), "content");
    EXPECT_TRUE(folder.names("out").empty());
}

TEST_P(MovingWithinAFileSystem, LeavesEverythingAsItWasWhereNothingMayBeMade)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    const FileURL from = folder.write("from", "content");
    folder.makeFolder("locked");
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0555});

    EXPECT_EQ(errorOf(GetParam(), from, folder.url("locked/to")), EACCES);

    EXPECT_EQ(folder.read("from"), "content");
    EXPECT_TRUE(folder.names("locked").empty());
}

TEST_P(MovingWithinAFileSystem, KeepsAnyNameOfBytes)
{
    for (const std::string& name :
        {std::string{"\xFF\xFE"}, std::string{"a\nb"}, std::string{"%41"}, std::string(255, 'x')}) {
        const FileURL from = m_folder.write("from", name);
        EXPECT_EQ(GetParam().move(from, m_folder.url(name)), Result::moved);
        EXPECT_EQ(m_folder.read(name), name);
    }
}

TEST(FileMover, AFolderDoesNotGoIntoItself)
{
    const TemporaryFolder folder;
    folder.write("from/file", "content");
    const Way way{"AnyWay", moveAnyWay, true};
    EXPECT_EQ(errorOf(way, folder.url("from"), folder.url("from/to")), EINVAL);
    EXPECT_THAT(folder.names("from"), testing::ElementsAre("file"));
}

TEST(FileMover, AFileWithSeveralNamesMovesByLink)
{
    const TemporaryFolder folder;
    const FileURL from = folder.write("from", "content");
    std::filesystem::create_hard_link(from.path(), folder.path("other"));
    EXPECT_EQ(FileMover::moveByLink(*HeldMove{from, folder.url("to")}), Result::moved);
    EXPECT_THAT(folder.names(), testing::ElementsAre("other", "to"));
}

TEST(FileMover, EveryWayTellsAnotherFileSystemAndChangesNothing)
{
    const TemporaryFolder folder;
    testWithPrivateMounts([&] {
        const FileURL from = folder.write("from", "content");
        mountMemory(folder.makeFolder("other").path());
        for (const auto way : {FileMover::moveByRename, FileMover::moveByLink,
                 FileMover::moveByPlaceholder, FileMover::moveWithinFileSystem}) {
            EXPECT_EQ(way(*HeldMove{from, folder.url("other/to")}), Result::otherFileSystem);
            EXPECT_TRUE(folder.names("other").empty());
            EXPECT_EQ(folder.read("from"), "content");
        }
        FileMover::move(*HeldMove{from, folder.url("other/to")});
        EXPECT_FALSE(folder.holds("from"));
        EXPECT_EQ(folder.read("other/to"), "content");
    });
}

TEST(FileMover, AFolderIsNotMovedAcrossFileSystems)
{
    const TemporaryFolder folder;
    testWithPrivateMounts([&] {
        folder.write("from/file", "content");
        mountMemory(folder.makeFolder("other").path());
        const Way way{"AnyWay", moveAnyWay, true};
        EXPECT_EQ(errorOf(way, folder.url("from"), folder.url("other/to")), EXDEV);
        EXPECT_TRUE(folder.names("other").empty());
        EXPECT_EQ(folder.read("from/file"), "content");
    });
}

}  // namespace tidemark
