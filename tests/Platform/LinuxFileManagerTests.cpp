#include "LinuxFileManager.h"

#include "PrivateMounts.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// What only the real file system has; the rest is in the contract that the fake keeps, too.

namespace tidemark {

class LinuxFileManagerTest : public testing::Test {
protected:
    template <typename Call>
    static std::error_code errorOf(Call call)
    {
        try {
            call();
        } catch (const std::filesystem::filesystem_error& error) {
            return error.code();
        }
        return {};
    }

    TemporaryFolder m_folder;
    ScopedHome m_home{m_folder.path("home")};
    LinuxFileManager m_files;
};

TEST_F(LinuxFileManagerTest, AFifoDoesNotHoldAReaderUp)
{
    ASSERT_EQ(::mkfifo(m_folder.path("fifo").c_str(), 0600), 0);
    const FileURL fifo = m_folder.url("fifo");
    EXPECT_EQ(errorOf([&] { m_files.readFile(fifo, 9); }), std::errc::invalid_argument);
    EXPECT_EQ(errorOf([&] { m_files.readPrefix(fifo, 9); }), std::errc::invalid_argument);
    EXPECT_EQ(errorOf([&] { m_files.writeAtomically(fifo, {}); }), std::errc::invalid_argument);
    EXPECT_TRUE(std::filesystem::is_fifo(fifo.path()));
}

TEST_F(LinuxFileManagerTest, AFileWithoutASizeIsReadToItsEnd)
{
    // The kernel makes up its content as it is read.
    const std::string content = m_files.readFile(FileURL{"/proc/self/status"}, 1 << 20);
    EXPECT_THAT(content, testing::HasSubstr("Pid:"));
    EXPECT_EQ(errorOf([&] { m_files.readFile(FileURL{"/proc/self/status"}, 10); }),
        std::errc::file_too_large);
    EXPECT_EQ(m_files.readPrefix(FileURL{"/proc/self/status"}, 5), "Name:");
}

TEST_F(LinuxFileManagerTest, ReadingAPrefixDoesNotTouchTheLastOpenedDate)
{
    const FileURL file = m_folder.write("note.md", "content");
    const struct timespec times[] = {{1'000'000'000, 0}, {1'000'000'001, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.path().c_str(), times, 0), 0);
    EXPECT_EQ(m_files.readPrefix(file, 100), "content");
    EXPECT_EQ(m_files.facts(file).lastOpened, Date{Seconds{1'000'000'000}});
}

TEST_F(LinuxFileManagerTest, APrefixOfAnotherUsersFileIsRead)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make a file for another user to read";
    const FileURL file = m_folder.write("note.md", "content");
    std::filesystem::permissions(m_folder.path(), std::filesystem::perms{0755});
    std::filesystem::permissions(file.path(), std::filesystem::perms{0644});
    const ScopedOrdinaryUser user;
    EXPECT_EQ(m_files.readPrefix(file, 3), "con");
}

TEST_F(LinuxFileManagerTest, WhatCannotBeKnownIsNotTakenForMissing)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    folder.write("locked/file", "");
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0666});
    for (const char* name : {"locked/file", "locked/none"}) {
        const FileURL url = folder.url(name);
        EXPECT_EQ(errorOf([&] { m_files.fileExists(url); }), std::errc::permission_denied);
        EXPECT_EQ(errorOf([&] { m_files.directoryExists(url); }), std::errc::permission_denied);
        EXPECT_EQ(errorOf([&] { m_files.identity(url); }), std::errc::permission_denied);
        EXPECT_EQ(errorOf([&] { m_files.facts(url); }), std::errc::permission_denied);
    }
}

TEST_F(LinuxFileManagerTest, AFolderIsListableWhereItsEntriesCanBeListedAndLookedUp)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    folder.write("in/folder/file", "");
    struct Row {
        const char* path;
        unsigned mode;
        std::errc expected;
    };
    const Row rows[] = {{"in/folder", 0500, std::errc{}}, {"in/folder", 0755, std::errc{}},
        {"in/folder", 0000, std::errc::permission_denied},
        {"in/folder", 0300, std::errc::permission_denied},
        {"in/folder", 0400, std::errc::permission_denied},
        {"in", 0600, std::errc::permission_denied}};
    for (const Row& row : rows) {
        std::filesystem::permissions(folder.path(row.path), std::filesystem::perms{row.mode});
        const FileURL url = folder.url("in/folder");
        const std::error_code error = errorOf([&] { m_files.requireListable(url); });
        EXPECT_EQ(error.value(), static_cast<int>(row.expected)) << row.path << row.mode;
        EXPECT_EQ(errorOf([&] { m_files.contentsOfDirectory(url); }), error);
    }
}

TEST_F(LinuxFileManagerTest, AnIdentityTellsEveryChange)
{
    const FileURL file = m_folder.write("file", "content");
    const struct timespec times[] = {{-5'000'000'000, 1}, {-5'000'000'000, 1}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.path().c_str(), times, 0), 0);
    const auto before = m_files.identity(file);
    ASSERT_TRUE(before);
    EXPECT_EQ(before->size, 7U);

    const struct timespec later[] = {{-5'000'000'000, 1}, {-5'000'000'000, 2}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.path().c_str(), later, 0), 0);
    const auto after = m_files.identity(file);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->inode, before->inode);
    EXPECT_NE(after, before);
}

TEST_F(LinuxFileManagerTest, CreationDatesCannotBeSet)
{
    const FileURL file = m_folder.write("file", "");
    EXPECT_EQ(errorOf([&] { m_files.setCreationDate(file, Date{}); }), std::errc::not_supported);
}

TEST_F(LinuxFileManagerTest, NewFoldersFollowTheUmask)
{
    const mode_t old = ::umask(027);
    m_files.createDirectory(m_folder.url("a/b"));
    ::umask(old);
    struct stat status = {};
    for (const char* path : {"a", "a/b"}) {
        ASSERT_EQ(::stat(m_folder.path(path).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0750U) << path;
    }
}

TEST_F(LinuxFileManagerTest, VisitsEveryNameOfAFolderThatTakesNamesExactly)
{
    const FileURL folder = m_folder.makeFolder("in");
    for (const char* name : {"a", "A", ".hidden", "\xFF"})
        m_folder.write(std::string("in/") + name, "");
    m_folder.makeLink("in/link", "nowhere");
    m_folder.makeFolder("in/folder");
    std::vector<std::string> names;
    const auto note = [&](std::string_view name) { names.emplace_back(name); };

    // Any disk may say that it cannot tell; what it does tell has to be all.
    if (m_files.visitNames(folder, note)) {
        EXPECT_THAT(names, testing::IsSupersetOf({"a", "A", ".hidden", "\xFF", "link", "folder"}));
    }
    EXPECT_EQ(errorOf([&] { m_files.visitNames(m_folder.url("none"), note); }),
        std::errc::no_such_file_or_directory);
    EXPECT_FALSE(m_files.visitNames(FileURL{"/proc"}, note)) << "an unknown file system";
}

TEST_F(LinuxFileManagerTest, VisitsTheNamesOfTheFolderThatIsHeldWhereverItIs)
{
    const FileURL folder = m_folder.makeFolder("in");
    m_folder.write("in/held", "");
    const HeldFolder held = m_files.hold(folder);
    std::filesystem::rename(folder.path(), m_folder.path("elsewhere"));
    m_folder.makeFolder("in");
    m_folder.write("in/another", "");
    std::vector<std::string> names;
    const bool isAll =
        m_files.visitNames(held, [&](std::string_view name) { names.emplace_back(name); });

    EXPECT_THAT(names, testing::Not(testing::Contains("another")));
    if (isAll) {
        EXPECT_THAT(names, testing::Contains("held"));
    }
}

}  // namespace tidemark
