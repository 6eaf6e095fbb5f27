#include "FileCopyMover.h"

#include "HeldMove.h"
#include "PrivateMounts.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

namespace tidemark {

using FileCopyMover::Temporary;

namespace {

struct Row {
    const char* name;
    Temporary temporary;
};

std::string nameOfRow(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

int errorOf(const FileURL& from, const FileURL& to, Temporary temporary, OwnChanges ownChanges = {})
{
    try {
        FileCopyMover::move(*HeldMove{from, to, ownChanges}, temporary);
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_FALSE(error.path1().empty());
        return error.code().value();
    }
    return 0;
}

struct stat statusOf(const FileURL& url)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(url.path().c_str(), &status), 0) << url.path();
    return status;
}

/// Lets other programs act right after the first change of one entry.
class AfterAChange final : public OwnChangeRecorder {
public:
    AfterAChange(FileURL entry, std::function<void()> deed)
        : m_entry(std::move(entry))
        , m_deed(std::move(deed))
    {
    }

    std::unique_ptr<OwnChange> begin(std::initializer_list<FileURL> entries) override
    {
        if (!m_deed || std::ranges::find(entries, m_entry) == entries.end())
            return nullptr;
        return std::make_unique<Change>(std::exchange(m_deed, nullptr));
    }

private:
    class Change final : public OwnChange {
    public:
        explicit Change(std::function<void()> deed)
            : m_deed(std::move(deed))
        {
        }
        ~Change() override { m_deed(); }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

    private:
        std::function<void()> m_deed;
    };

    FileURL m_entry;
    std::function<void()> m_deed;
};

void setDates(const FileURL& url, std::int64_t accessed, std::int64_t modified)
{
    const struct timespec times[] = {{accessed, 123'456'789}, {modified, 987'654'321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, url.path().c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

void setAttribute(const FileURL& url, const char* name, const std::string& value)
{
    ASSERT_EQ(::setxattr(url.path().c_str(), name, value.data(), value.size(), 0), 0)
        << name << ": " << std::strerror(errno);
}

std::optional<std::string> attribute(const FileURL& url, const char* name)
{
    std::string value(70'000, '\0');
    const ssize_t size = ::getxattr(url.path().c_str(), name, value.data(), value.size());
    if (size < 0)
        return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

/// user::rw-, user:USER:r--, group::r--, mask::rw-, other::---, as the kernel stores it.
std::string accessList(unsigned user = 1234)
{
    const auto entry = [](int tag, int permissions, unsigned id) {
        std::string bytes{static_cast<char>(tag), 0, static_cast<char>(permissions), 0};
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>(id >> shift & 0xFF);
        return bytes;
    };
    constexpr unsigned none = 0xFFFFFFFF;
    return std::string{"\x02\0\0\0", 4} + entry(0x01, 6, none) + entry(0x02, 4, user)
        + entry(0x04, 4, none) + entry(0x10, 6, none) + entry(0x20, 0, none);
}

}  // namespace

class MovingByCopy : public testing::TestWithParam<Row> {
protected:
    void move(const FileURL& from, const FileURL& to)
    {
        FileCopyMover::move(*HeldMove{from, to}, GetParam().temporary);
    }

    int errorOfMove(const FileURL& from, const FileURL& to)
    {
        return errorOf(from, to, GetParam().temporary);
    }

    TemporaryFolder m_folder;
};

INSTANTIATE_TEST_SUITE_P(FileCopyMover, MovingByCopy,
    testing::Values(
        Row{"UnnamedTemporary", Temporary::unnamed}, Row{"NamedTemporary", Temporary::named}),
    nameOfRow);

TEST_P(MovingByCopy, ContentOfAnySizeArrivesWhole)
{
    for (const std::size_t size : {0U, 1U, 4'095U, 1U << 20, (1U << 20) + 1, 5'000'003U}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            content[i] = static_cast<char>(i * 31 + i / 251);
        const FileURL from = m_folder.write("from", content);
        move(from, m_folder.url("to"));
        EXPECT_THAT(m_folder.names(), testing::ElementsAre("to"));
        EXPECT_TRUE(m_folder.read("to") == content) << size;
        std::filesystem::remove(m_folder.path("to"));
    }
}

TEST_P(MovingByCopy, HolesStayHoles)
{
    const FileURL from = m_folder.write("from", "");
    const int file = ::open(from.path().c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    constexpr off_t far = 4 << 20;
    ASSERT_EQ(::pwrite(file, "middle", 6, far), 6);
    ASSERT_EQ(::ftruncate(file, 2 * far), 0);
    ::close(file);
    const blkcnt_t blocks = statusOf(from).st_blocks;

    move(from, m_folder.url("to"));

    const struct stat moved = statusOf(m_folder.url("to"));
    EXPECT_EQ(moved.st_size, 2 * far);
    EXPECT_LE(moved.st_blocks, blocks + 64);
    const std::string content = m_folder.read("to");
    EXPECT_EQ(content.substr(far, 6), "middle");
    EXPECT_EQ(content.find_first_not_of('\0'), static_cast<std::size_t>(far));
    EXPECT_EQ(content.find_last_not_of('\0'), static_cast<std::size_t>(far) + 5);
}

TEST_P(MovingByCopy, DatesAndModeAreKept)
{
    for (const std::int64_t date :
        std::vector<std::int64_t>{-1'000'000'000, 1'000'000'000, 4'000'000'000}) {
        for (const mode_t mode : {0600U, 0444U, 0755U, 0000U, 04711U}) {
            const FileURL from = m_folder.write("from", "content");
            ASSERT_EQ(::chmod(from.path().c_str(), mode), 0);
            // Without the permission to read it, only root can copy it at all.
            if ((mode & 0400) == 0 && ::geteuid() != 0) {
                EXPECT_EQ(errorOfMove(from, m_folder.url("to")), EACCES);
                ASSERT_EQ(::unlink(from.path().c_str()), 0);
                continue;
            }
            setDates(from, date, date + 1);
            const struct stat before = statusOf(from);

            move(from, m_folder.url("to"));

            const struct stat after = statusOf(m_folder.url("to"));
            EXPECT_EQ(after.st_mode, before.st_mode);
            EXPECT_EQ(after.st_atim.tv_sec, before.st_atim.tv_sec);
            EXPECT_EQ(after.st_atim.tv_nsec, before.st_atim.tv_nsec);
            EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
            EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
            EXPECT_EQ(after.st_uid, before.st_uid);
            EXPECT_EQ(after.st_gid, before.st_gid);
            ASSERT_EQ(::unlink(m_folder.path("to").c_str()), 0);
        }
    }
}

TEST_P(MovingByCopy, ExtendedAttributesAndAccessListsAreKept)
{
    const FileURL from = m_folder.write("from", "content");
    const std::string binary{"a\0b\xFF", 4};
    setAttribute(from, "user.one", binary);
    setAttribute(from, "user.empty", "");
    setAttribute(from, "user.long", std::string(2'000, 'x'));
    setAttribute(from, "system.posix_acl_access", accessList());
    const mode_t mode = statusOf(from).st_mode;

    move(from, m_folder.url("to"));

    const FileURL to = m_folder.url("to");
    EXPECT_EQ(attribute(to, "user.one"), binary);
    EXPECT_EQ(attribute(to, "user.empty"), "");
    EXPECT_EQ(attribute(to, "user.long"), std::string(2'000, 'x'));
    EXPECT_EQ(attribute(to, "system.posix_acl_access"), accessList());
    EXPECT_EQ(statusOf(to).st_mode, mode);
}

TEST_P(MovingByCopy, TheFoldersDefaultAccessListIsNotPutOn)
{
    const FileURL from = m_folder.write("from", "content");
    ASSERT_EQ(::chmod(from.path().c_str(), 0640), 0);
    setAttribute(m_folder.makeFolder("open"), "system.posix_acl_default", accessList());
    move(from, m_folder.url("open/to"));
    EXPECT_EQ(attribute(m_folder.url("open/to"), "system.posix_acl_access"), std::nullopt);
    EXPECT_EQ(statusOf(m_folder.url("open/to")).st_mode & 07777, 0640U);
}

TEST_P(MovingByCopy, LinksAreMovedAsLinks)
{
    const std::string targets[] = {"nowhere", "/", "a/../b\n%41", std::string(4'000, 'x')};
    for (const std::string& target : targets) {
        const FileURL from = m_folder.makeLink("from", target);
        setDates(from, 1'000'000'000, 1'000'000'001);
        move(from, m_folder.url("to"));
        EXPECT_THAT(m_folder.names(), testing::ElementsAre("to"));
        EXPECT_EQ(std::filesystem::read_symlink(m_folder.path("to")), target);
        EXPECT_EQ(statusOf(m_folder.url("to")).st_mtim.tv_sec, 1'000'000'001);
        std::filesystem::remove(m_folder.path("to"));
    }
}

TEST_P(MovingByCopy, NothingIsReplacedAndNothingLeftBehind)
{
    const FileURL file = m_folder.write("file", "precious");
    const FileURL link = m_folder.makeLink("link", "file");
    m_folder.write("occupied", "mine");
    m_folder.makeFolder("folder");
    m_folder.makeLink("dangling", "nowhere");
    const auto before = m_folder.names();
    for (const FileURL& from : {file, link}) {
        for (const char* occupant : {"occupied", "folder", "dangling", "file", "link"}) {
            EXPECT_EQ(errorOfMove(from, m_folder.url(occupant)), EEXIST) << occupant;
            EXPECT_EQ(m_folder.names(), before) << occupant;
        }
    }
    EXPECT_EQ(m_folder.read("file"), "precious");
    EXPECT_EQ(m_folder.read("occupied"), "mine");
}

TEST_P(MovingByCopy, OtherKindsOfFilesAreNotCopied)
{
    m_folder.write("folder/file", "content");
    ASSERT_EQ(::mkfifo(m_folder.path("fifo").c_str(), 0600), 0);
    for (const char* from : {"folder", "fifo"})
        EXPECT_EQ(errorOfMove(m_folder.url(from), m_folder.url("to")), EXDEV) << from;
    EXPECT_THAT(m_folder.names(), testing::ElementsAre("fifo", "folder"));
}

TEST_P(MovingByCopy, TheCopyIsTakenBackWhereTheOriginalCannotBeRemoved)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    folder.write("locked/file", "content");
    folder.makeLink("locked/link", "file");
    folder.makeFolder("out");
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0555});
    for (const char* from : {"locked/file", "locked/link"}) {
        EXPECT_EQ(errorOfMove(folder.url(from), folder.url("out/to")), EACCES) << from;
        EXPECT_TRUE(folder.names("out").empty()) << from;
    }
    EXPECT_EQ(folder.read("locked/file"), "content");
}

TEST_P(MovingByCopy, TheCopyIsTakenBackFromAFolderThatWasMovedAway)
{
    const FileURL from = m_folder.write("from", "content");
    m_folder.makeFolder("out");
    AfterAChange others{m_folder.url("out/to"), [&] {
                            std::filesystem::rename(
                                m_folder.path("from"), m_folder.path("elsewhere"));
                            std::filesystem::rename(m_folder.path("out"), m_folder.path("away"));
                        }};

    EXPECT_NE(errorOf(from, m_folder.url("out/to"), GetParam().temporary, OwnChanges{&others}), 0);

    EXPECT_TRUE(m_folder.names("away").empty());
    EXPECT_EQ(m_folder.read("elsewhere"), "content");
}

TEST_P(MovingByCopy, MissingThingsAreErrors)
{
    const FileURL from = m_folder.write("from", "content");
    EXPECT_EQ(errorOfMove(m_folder.url("none"), m_folder.url("to")), ENOENT);
    EXPECT_EQ(errorOfMove(from, m_folder.url("none/to")), ENOENT);
    EXPECT_EQ(errorOfMove(from, m_folder.url(std::string(256, 'x'))), ENAMETOOLONG);
    EXPECT_THAT(m_folder.names(), testing::ElementsAre("from"));
}

TEST_P(MovingByCopy, ArrivesOnAnotherFileSystem)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.makeFolder("other").path());
        const FileURL from = m_folder.write("from", std::string(3'000'000, 'x'));
        setDates(from, 1'000'000'000, 1'000'000'001);
        const struct stat before = statusOf(from);
        setAttribute(from, "system.posix_acl_access", accessList(::geteuid()));

        move(from, m_folder.url("other/to"));

        EXPECT_FALSE(m_folder.holds("from"));
        EXPECT_THAT(m_folder.names("other"), testing::ElementsAre("to"));
        EXPECT_EQ(m_folder.read("other/to"), std::string(3'000'000, 'x'));
        const struct stat after = statusOf(m_folder.url("other/to"));
        EXPECT_NE(after.st_dev, before.st_dev);
        EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
        EXPECT_EQ(attribute(m_folder.url("other/to"), "system.posix_acl_access"),
            accessList(::geteuid()));
    });
}

TEST_P(MovingByCopy, AFullDiskLeavesTheFileWhereItWas)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.makeFolder("small").path(), "size=64k");
        const FileURL from = m_folder.write("from", std::string(1'000'000, 'x'));
        EXPECT_EQ(errorOfMove(from, m_folder.url("small/to")), ENOSPC);
        EXPECT_TRUE(m_folder.names("small").empty());
        EXPECT_EQ(m_folder.read("from").size(), 1'000'000U);
    });
}

TEST_P(MovingByCopy, AReadOnlyOriginalLeavesNoCopy)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.makeFolder("fixed").path());
        const FileURL from = m_folder.write("fixed/from", "content");
        makeReadOnly(m_folder.path("fixed"));
        EXPECT_EQ(errorOfMove(from, m_folder.url("to")), EROFS);
        EXPECT_FALSE(m_folder.holds("to"));
        EXPECT_EQ(m_folder.read("fixed/from"), "content");
    });
}

TEST_P(MovingByCopy, AnAttributeIsKeptOrTheMoveFails)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.makeFolder("other").path());
        // Most disks have no room for so long a value, memory has.
        const std::string value(60'000, 'x');
        const FileURL from = m_folder.write("other/from", "content");
        const char* path = from.path().c_str();
        if (::setxattr(path, "user.long", value.data(), value.size(), 0) != 0)
            setAttribute(from, "system.posix_acl_access", accessList(::geteuid()));
        const auto attributes = [](const FileURL& url) {
            return std::pair{
                attribute(url, "user.long"), attribute(url, "system.posix_acl_access")};
        };
        const auto before = attributes(from);

        const int error = errorOfMove(from, m_folder.url("to"));

        EXPECT_EQ(m_folder.holds("to"), error == 0);
        EXPECT_EQ(m_folder.holds("other/from"), error != 0);
        EXPECT_EQ(attributes(error == 0 ? m_folder.url("to") : from), before);
    });
}

TEST_P(MovingByCopy, AnOwnerThatCannotBeKeptIsAnError)
{
    // Only root has files of two owners at hand.
    if (::geteuid() != 0)
        GTEST_SKIP() << "this user cannot make a file for another one";
    const TemporaryFolder folder;
    const FileURL from = folder.write("from", "content");
    std::filesystem::permissions(from.path(), std::filesystem::perms{0644});

    const ScopedOrdinaryUser user{folder};
    EXPECT_EQ(errorOfMove(from, folder.url("to")), EPERM);
    EXPECT_THAT(folder.names(), testing::ElementsAre("from"));
}

TEST(FileCopyMover, ChoosesAWayThatTheDestinationOffers)
{
    const TemporaryFolder folder;
    const FileURL from = folder.write("from", "content");
    FileCopyMover::move(*HeldMove{from, folder.url("to")});
    EXPECT_THAT(folder.names(), testing::ElementsAre("to"));
    const HeldFolder removed = Folders::hold(folder.makeFolder("removed"));
    std::filesystem::remove(folder.path("removed"));
    EXPECT_FALSE(FileCopyMover::offersUnnamedFiles(removed));
}

TEST(FileCopyMover, ReadingTheOriginalDoesNotTouchItsLastOpenedDate)
{
    const TemporaryFolder folder;
    const FileURL from = folder.write("from", "content");
    // Older than the last change: a read would set it even where that is done sparingly.
    setDates(from, 1'000'000'000, 1'000'000'001);
    folder.write("to", "occupied");
    EXPECT_EQ(errorOf(from, folder.url("to"), Temporary::unnamed), EEXIST);
    EXPECT_EQ(statusOf(from).st_atim.tv_sec, 1'000'000'000);
}

}  // namespace tidemark
