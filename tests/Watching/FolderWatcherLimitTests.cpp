#include "WatcherFixture.h"

#include "PrivateMounts.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace tidemark {

namespace {

class WatchLimitTest : public WatcherTest {
protected:
    /// Makes `count` folders, each with one in it.
    void makeFolders(int count) const
    {
        elsewhere("cd root; seq -f %g/deep " + std::to_string(count) + " | xargs mkdir -p");
    }

    FolderWatcherOptions limitedTo(std::size_t limit)
    {
        FolderWatcherOptions limited = options();
        limited.watchLimit = limit;
        return limited;
    }

    /// Only within `testWithPrivateMounts`: the system grants no more than that.
    void setSystemLimit(int limit) const
    {
        const std::string file = GetParam() == WatchBackend::fanotify
            ? "/proc/sys/user/max_fanotify_marks"
            : "/proc/sys/user/max_inotify_watches";
        std::ofstream stream{file};
        stream << limit << std::flush;
        ASSERT_TRUE(stream.good()) << "cannot write " << file;
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Backends, WatchLimitTest, bothBackends(), backendName);

TEST_P(WatchLimitTest, TheUpperFoldersWinWhenItsShareIsUsedUp)
{
    makeFolders(10);
    watch({"root"}, limitedTo(11));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::partial);
    EXPECT_EQ(status().reason, std::errc::no_space_on_device);
    EXPECT_EQ(status().backend, GetParam());
    EXPECT_TRUE(notices("touch root/x"));
    for (int i = 1; i <= 10; ++i)
        EXPECT_TRUE(notices("touch root/" + std::to_string(i) + "/x"));
    EXPECT_FALSE(notices("touch root/10/deep/x"));
}

TEST_P(WatchLimitTest, AShareThatIsJustEnoughIsEnough)
{
    makeFolders(5);
    watch({"root"}, limitedTo(11));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
    EXPECT_EQ(m_limits.take(), 0);
}

TEST_P(WatchLimitTest, SaysOnceThatThereAreNotEnoughWatches)
{
    makeFolders(10);
    watch({"root"}, limitedTo(5));
    EXPECT_EQ(m_limits.take(), 1);
    EXPECT_TRUE(notices("mkdir -p root/more/and/more"));
    EXPECT_TRUE(notices("rm -r root/1 root/2"));
    EXPECT_EQ(m_limits.take(), 0);
}

TEST_P(WatchLimitTest, TheFoldersThemselvesAreWatchedWhateverTheShare)
{
    elsewhere("mkdir -p one/a two/a");
    watch({"one", "two", "root"}, limitedTo(0));
    for (std::size_t root : {0U, 1U})
        EXPECT_EQ(status(root).coverage, WatchStatus::Coverage::partial);
    EXPECT_EQ(status(2).coverage, WatchStatus::Coverage::full);
    EXPECT_TRUE(notices("touch one/x"));
    EXPECT_TRUE(notices("touch two/x"));
    EXPECT_TRUE(notices("touch root/x"));
}

TEST_P(WatchLimitTest, TriesAgainWhenFoldersVanish)
{
    makeFolders(10);
    watch({"root"}, limitedTo(15));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::partial);
    EXPECT_TRUE(notices("cd root; rm -r 1 2 3 4 5"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
    for (int i = 6; i <= 10; ++i)
        EXPECT_TRUE(notices("touch root/" + std::to_string(i) + "/deep/x"));
}

TEST_P(WatchLimitTest, AFolderThatIsKnownIsKeptThoughThereIsNoRoom)
{
    makeFolders(10);
    watch({"root"}, limitedTo(11));
    EXPECT_TRUE(notices("mv root/3 root/x; mv root/x root/3; chmod 700 root/3"));
    EXPECT_TRUE(notices("touch root/3/x"));
    EXPECT_TRUE(notices("mv root/3 root/moved"));
    EXPECT_TRUE(notices("touch root/moved/x"));
}

TEST_P(WatchLimitTest, ManagesWithWhatTheSystemGrants)
{
    makeFolders(100);
    testWithPrivateMounts([this] {
        setSystemLimit(50);
        watch({"root"}, limitedTo(100'000));
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::partial);
        EXPECT_EQ(status().reason, std::errc::no_space_on_device);
        EXPECT_EQ(m_limits.take(), 1);
        EXPECT_TRUE(notices("touch root/x"));
        EXPECT_TRUE(notices("cd root; rm -r $(seq 2 100)"));
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
        EXPECT_TRUE(notices("touch root/1/deep/x"));
        m_watcher.reset();
    });
}

TEST_P(WatchLimitTest, TakesOnlyAPartOfWhatTheSystemGrants)
{
    makeFolders(20);
    testWithPrivateMounts([this] {
        // Half of the marks, a quarter of the watches.
        setSystemLimit(GetParam() == WatchBackend::fanotify ? 42 : 84);
        watch();
        EXPECT_TRUE(notices("touch root/20/x"));
        EXPECT_FALSE(notices("touch root/20/deep/x"));
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::partial);
        m_watcher.reset();
    });
}

TEST_P(WatchLimitTest, AFolderThatComesLaterTakesTheWatchOfOneFarDown)
{
    makeFolders(100);
    testWithPrivateMounts([this] {
        setSystemLimit(50);
        watch({"root", "late"}, limitedTo(100'000));
        EXPECT_TRUE(notices("mkdir late"));
        EXPECT_EQ(status(1).coverage, WatchStatus::Coverage::full);
        EXPECT_TRUE(notices("touch late/x"));
        EXPECT_TRUE(notices("touch root/x"));
        m_watcher.reset();
    });
}

TEST_P(WatchLimitTest, WithoutAnyWatchTheFolderIsSaidNotToBeWatched)
{
    testWithPrivateMounts([this] {
        setSystemLimit(0);
        watch();
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
        EXPECT_EQ(status().reason, std::errc::no_space_on_device);
        EXPECT_EQ(m_limits.take(), 1);
        m_watcher.reset();
    });
}

TEST(WatchFallback, WithoutFanotifyMarksTheFolderIsWatchedByInotify)
{
    TemporaryFolder folder;
    folder.makeFolder("root/a");
    testWithPrivateMounts([&] {
        std::ofstream{"/proc/sys/user/max_fanotify_marks"} << 0 << std::flush;
        ManualTime time;
        Tally calls;
        FolderWatcherOptions options;
        options.time = &time;
        FolderWatcher watcher{{folder.url("root")}, quietTime, [&] { calls.add(); }, options};
        watcher.start();
        watcher.settle();
        EXPECT_EQ(watcher.status().front().backend, WatchBackend::inotify);
        otherProcess("touch " + folder.path("root/x"));
        watcher.settle();
        time.advance(quietTime);
        watcher.settle();
        EXPECT_EQ(calls.take(), 1);
    });
}

TEST(WatchFallback, WithoutFanotifyGroupsTheFolderIsWatchedByInotifyCompletely)
{
    TemporaryFolder folder;
    folder.makeFolder("root/a/b");
    testWithPrivateMounts([&] {
        std::ofstream{"/proc/sys/user/max_fanotify_groups"} << 0 << std::flush;
        ManualTime time;
        Tally calls;
        FolderWatcherOptions options;
        options.time = &time;
        FolderWatcher watcher{{folder.url("root")}, quietTime, [&] { calls.add(); }, options};
        watcher.start();
        watcher.settle();
        EXPECT_EQ(watcher.status().front().backend, WatchBackend::inotify);
        EXPECT_EQ(watcher.status().front().coverage, WatchStatus::Coverage::full);
        otherProcess("touch " + folder.path("root/a/b/x"));
        watcher.settle();
        time.advance(quietTime);
        watcher.settle();
        EXPECT_EQ(calls.take(), 1);
    });
}

TEST(WatchFallback, FanotifyComesFirst)
{
    const TemporaryFolder folder;
    FolderWatcher watcher{{folder.url()}, quietTime, [] {}};
    watcher.start();
    EXPECT_EQ(watcher.status().front().backend, WatchBackend::fanotify);
}

}  // namespace tidemark
