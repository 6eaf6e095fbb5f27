#include "TemporaryDirectory.h"

#include "PrivateMounts.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

namespace tidemark {

using testing::ElementsAre;

class TemporaryDirectoryTest : public testing::Test {
protected:
    TemporaryDirectoryTest()
    {
        makeHolder("a");
        makeHolder("b");
    }

    FileURL folder() const { return TemporaryDirectory::folder(m_candidates); }

    /// The directory in one of the candidates, relative to the test's folder.
    static std::string in(const std::string& candidate)
    {
        return candidate + "/tidemark-" + std::to_string(::geteuid());
    }

    FileURL urlIn(const std::string& candidate) const
    {
        return FileURL::directory(m_folder.path(in(candidate)));
    }

    mode_t modeOf(const std::string& relative) const
    {
        struct stat status = {};
        EXPECT_EQ(::lstat(m_folder.path(relative).c_str(), &status), 0) << relative;
        return status.st_mode & 07777;
    }

    void setMode(const std::string& relative, mode_t mode) const
    {
        ASSERT_EQ(::chmod(m_folder.path(relative).c_str(), mode), 0);
    }

    /// A folder that nobody else can write to, whatever the umask.
    void makeHolder(const std::string& relative) const
    {
        m_folder.makeFolder(relative);
        setMode(relative, 0755);
    }

    void removeAll() const
    {
        for (const char* holder : {"a", "b"}) {
            std::filesystem::remove_all(m_folder.path(holder));
            makeHolder(holder);
        }
    }

    /// Gives it to another user, which only root can.
    void giveAway(const std::string& relative) const
    {
        constexpr uid_t another = 65534;
        ASSERT_EQ(::lchown(m_folder.path(relative).c_str(), another, another), 0);
    }

    TemporaryFolder m_folder;
    std::vector<FileURL> m_candidates{m_folder.url("a"), m_folder.url("b")};
};

TEST_F(TemporaryDirectoryTest, IsForTheUserAloneWhateverTheUmask)
{
    for (const mode_t mask : {0000U, 0022U, 0077U, 0277U, 0777U}) {
        const mode_t old = ::umask(mask);
        const FileURL made = folder();
        ::umask(old);
        EXPECT_EQ(made, urlIn("a"));
        EXPECT_EQ(modeOf(in("a")), 0700U) << mask;
        removeAll();
    }
}

TEST_F(TemporaryDirectoryTest, TakesNoModeOverFromTheFolderThatHoldsIt)
{
    setMode("a", 02755);
    EXPECT_EQ(folder(), urlIn("a"));
    EXPECT_EQ(modeOf(in("a")), 0700U);
}

TEST_F(TemporaryDirectoryTest, IsUsedAgainWithWhatItHolds)
{
    EXPECT_EQ(folder(), urlIn("a"));
    m_folder.write(in("a") + "/file", "content");
    EXPECT_EQ(folder(), urlIn("a"));
    EXPECT_EQ(m_folder.read(in("a") + "/file"), "content");
    EXPECT_TRUE(m_folder.names("b").empty());
}

TEST_F(TemporaryDirectoryTest, IsClosedToThoseWhoCouldOnlyReadIt)
{
    for (const mode_t mode : {0755U, 0750U, 0711U, 0000U, 01700U, 02700U}) {
        m_folder.makeFolder(in("a"));
        setMode(in("a"), mode);
        EXPECT_EQ(folder(), urlIn("a"));
        EXPECT_EQ(modeOf(in("a")), 0700U) << mode;
        removeAll();
    }
}

struct RefusalRow {
    const char* name;
    int error;
    bool needsRoot;
    std::function<void()> prepare;
};

TEST_F(TemporaryDirectoryTest, WhatCannotBeTrustedIsLeftAloneAndTheNextPlaceUsed)
{
    m_folder.makeFolder("victim");
    const std::string place = in("a");
    const RefusalRow rows[] = {
        {"a link to a folder", ENOTDIR, false, [&] { m_folder.makeLink(place, "../victim"); }},
        {"a dangling link", ENOTDIR, false, [&] { m_folder.makeLink(place, "../victim/none"); }},
        {"a file", ENOTDIR, false, [&] { m_folder.write(place, "content"); }},
        {"a fifo", ENOTDIR, false,
            [&] { ASSERT_EQ(::mkfifo(m_folder.path(place).c_str(), 0700), 0); }},
        {"writable by the group", EPERM, false,
            [&] {
                m_folder.makeFolder(place);
                setMode(place, 0770);
            }},
        {"writable by all", EPERM, false,
            [&] {
                m_folder.makeFolder(place);
                setMode(place, 0702);
            }},
        {"another user's", EPERM, true,
            [&] {
                m_folder.makeFolder(place);
                setMode(place, 0700);
                giveAway(place);
            }},
        {"in a folder where all may rename", EPERM, false, [&] { setMode("a", 0777); }},
        {"in another user's folder", EPERM, true, [&] { giveAway("a"); }},
        {"in a file", ENOTDIR, false,
            [&] {
                std::filesystem::remove(m_folder.path("a"));
                m_folder.write("a", "content");
            }},
        {"in nothing", ENOENT, false, [&] { std::filesystem::remove(m_folder.path("a")); }},
    };
    for (const RefusalRow& row : rows) {
        // Only root can make what belongs to another user.
        if (row.needsRoot && ::geteuid() != 0)
            continue;
        SCOPED_TRACE(row.name);
        removeAll();
        row.prepare();
        struct stat before = {};
        struct stat after = {};
        const int existed = ::lstat(m_folder.path(place).c_str(), &before);

        EXPECT_EQ(folder(), urlIn("b"));

        EXPECT_EQ(modeOf(in("b")), 0700U);
        EXPECT_EQ(::lstat(m_folder.path(place).c_str(), &after), existed);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_TRUE(m_folder.names("victim").empty());
        try {
            TemporaryDirectory::folder(std::span{m_candidates}.first(1));
            ADD_FAILURE() << "it was trusted";
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.code().value(), row.error);
        }
    }
}

TEST_F(TemporaryDirectoryTest, WhereNothingCanBeWrittenTheNextPlaceIsUsed)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.path("a"), "mode=755");
        EXPECT_EQ(folder(), urlIn("a"));
        makeReadOnly(m_folder.path("a"));
        EXPECT_EQ(folder(), urlIn("b"));
    });
}

TEST_F(TemporaryDirectoryTest, AStickyFolderMayBeOpenToAll)
{
    setMode("a", 01777);
    EXPECT_EQ(folder(), urlIn("a"));
}

TEST_F(TemporaryDirectoryTest, TheFolderThatHoldsItMayBeALink)
{
    makeHolder("real");
    m_folder.makeLink("link", "real");
    m_candidates = {m_folder.url("link")};
    EXPECT_EQ(folder(), urlIn("link"));
    EXPECT_EQ(modeOf(in("real")), 0700U);
}

TEST_F(TemporaryDirectoryTest, IsCheckedEachTime)
{
    EXPECT_EQ(folder(), urlIn("a"));
    std::filesystem::rename(m_folder.path(in("a")), m_folder.path("mine"));
    m_folder.makeLink(in("a"), "../mine");
    EXPECT_EQ(folder(), urlIn("b"));
}

TEST_F(TemporaryDirectoryTest, WithoutAnyPlaceTheFirstOneSaysWhy)
{
    m_folder.write(in("a"), "in the way");
    std::filesystem::remove(m_folder.path("b"));
    try {
        folder();
        ADD_FAILURE() << "there was a place";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::not_a_directory);
        EXPECT_EQ(error.path1(), m_folder.path(in("a")));
    }
    m_candidates.clear();
    EXPECT_THROW(folder(), std::filesystem::filesystem_error);
}

TEST_F(TemporaryDirectoryTest, TheEnvironmentTellsThePlaces)
{
    const FileURL common = FileURL::directory("/tmp");
    {
        const ScopedEnvironment first{"TMPDIR", m_folder.path("a/")};
        const ScopedEnvironment last{"XDG_RUNTIME_DIR", m_folder.path("b")};
        const FileURL a = FileURL::directory(m_folder.path("a"));
        const FileURL b = FileURL::directory(m_folder.path("b"));
        EXPECT_THAT(TemporaryDirectory::candidates(), ElementsAre(a, common, b));
        EXPECT_EQ(TemporaryDirectory::folder(), urlIn("a"));
    }
    for (const std::optional<std::string>& value : {std::optional<std::string>{},
             std::optional<std::string>{""}, std::optional<std::string>{"relative"}}) {
        const ScopedEnvironment first{"TMPDIR", value};
        const ScopedEnvironment last{"XDG_RUNTIME_DIR", value};
        EXPECT_THAT(TemporaryDirectory::candidates(), ElementsAre(common));
    }
}

}  // namespace tidemark
