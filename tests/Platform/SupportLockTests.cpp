#include "SupportLock.h"

#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <optional>

namespace tidemark {

using testing::ElementsAre;

TEST(SupportLock, IsHeldByOneAtATime)
{
    const TemporaryFolder folder;
    {
        const SupportLock lock = SupportLock::acquire(folder.url());
        EXPECT_FALSE(SupportLock::tryAcquire(folder.url()));
    }
    EXPECT_TRUE(SupportLock::tryAcquire(folder.url()));
}

TEST(SupportLock, MovesWithItsObject)
{
    const TemporaryFolder folder;
    std::optional<SupportLock> outer;
    {
        SupportLock lock = SupportLock::acquire(folder.url());
        outer.emplace(std::move(lock));
    }
    EXPECT_FALSE(SupportLock::tryAcquire(folder.url()));
    outer.reset();
    EXPECT_TRUE(SupportLock::tryAcquire(folder.url()));
}

TEST(SupportLock, WaitsUntilItIsFree)
{
    const TemporaryFolder folder;
    std::optional<SupportLock> first = SupportLock::acquire(folder.url());
    std::promise<void> isRunning;
    auto second = std::async(std::launch::async, [&] {
        isRunning.set_value();
        const SupportLock lock = SupportLock::acquire(folder.url());
        return !SupportLock::tryAcquire(folder.url());
    });
    isRunning.get_future().wait();
    EXPECT_NE(second.wait_for(std::chrono::seconds{0}), std::future_status::ready);
    first.reset();
    EXPECT_TRUE(second.get());
}

TEST(SupportLock, EndsWithTheProcessThatHoldsIt)
{
    const TemporaryFolder folder;
    int ready[2];
    ASSERT_EQ(::pipe2(ready, O_CLOEXEC), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        [[maybe_unused]] const SupportLock lock = SupportLock::acquire(folder.url());
        while (::write(ready[1], "x", 1) == 1)
            ::pause();
        ::_exit(1);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_FALSE(SupportLock::tryAcquire(folder.url()));

    ASSERT_EQ(::kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(SupportLock::tryAcquire(folder.url()));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(SupportLock, MakesTheFolderForTheUserAlone)
{
    const TemporaryFolder folder;
    const SupportLock lock = SupportLock::acquire(folder.url("a/Tidemark"));
    struct stat status = {};
    ASSERT_EQ(::stat(folder.path("a/Tidemark").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
}

TEST(SupportLock, AnotherFoldersLockIsAnother)
{
    const TemporaryFolder folder;
    const SupportLock one = SupportLock::acquire(folder.url("one"));
    EXPECT_TRUE(SupportLock::tryAcquire(folder.url("two")));
}

TEST(SupportLock, ALockFileThatWasRemovedIsReplaced)
{
    const TemporaryFolder folder;
    const SupportLock stale = SupportLock::acquire(folder.url());
    std::filesystem::remove(folder.path("lock"));
    const std::optional<SupportLock> lock = SupportLock::tryAcquire(folder.url());
    EXPECT_TRUE(lock);
    EXPECT_FALSE(SupportLock::tryAcquire(folder.url()));
}

TEST(SupportLock, WhoGetsItRemovesWhatKilledWritersLeft)
{
    const TemporaryFolder folder;
    for (const char* name : {".settings.json.0123456789abcdef.tmp",
             ".journal.json.0123456789abcdef.tmp", ".settings.json.mine.tmp", "settings.json",
             "journal.json", ".notes.0123456789abcdef.tmp"})
        folder.write(name, "");
    {
        const SupportLock lock = SupportLock::acquire(folder.url());
        EXPECT_THAT(folder.names(),
            ElementsAre(".notes.0123456789abcdef.tmp", ".settings.json.mine.tmp", "journal.json",
                "lock", "settings.json"));
        folder.write(".journal.json.0123456789abcdef.tmp", "");
        EXPECT_FALSE(SupportLock::tryAcquire(folder.url()));
        EXPECT_TRUE(folder.holds(".journal.json.0123456789abcdef.tmp"));
    }
    EXPECT_TRUE(SupportLock::tryAcquire(folder.url()));
    EXPECT_FALSE(folder.holds(".journal.json.0123456789abcdef.tmp"));
}

TEST(SupportLock, AFolderThatCannotBeMadeIsAnError)
{
    const TemporaryFolder folder;
    folder.write("file", "");
    EXPECT_THROW(SupportLock::acquire(folder.url("file")), std::filesystem::filesystem_error);
    EXPECT_THROW(SupportLock::tryAcquire(folder.url("file/in")), std::filesystem::filesystem_error);
}

}  // namespace tidemark
