#include "WatcherFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dirent.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <limits>
#include <map>
#include <sstream>
#include <thread>

namespace tidemark {

using testing::Each;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {

class FolderWatcherTest : public WatcherTest { };

/// How often each thread of this process that belongs to a watcher has gone to sleep, by the thread's number.
std::map<std::string, long> sleepsOfWatcherThreads()
{
    std::map<std::string, long> sleeps;
    for (const auto& task : std::filesystem::directory_iterator{"/proc/self/task"}) {
        std::ifstream status{task.path() / "status"};
        std::string name;
        for (std::string line; std::getline(status, line);) {
            std::istringstream fields{line};
            std::string field;
            long count = 0;
            fields >> field;
            if (field == "Name:")
                fields >> name;
            if (field == "voluntary_ctxt_switches:" && name.starts_with("watcher")
                && fields >> count)
                sleeps[task.path().filename()] = count;
        }
    }
    return sleeps;
}

/// Waits until all these threads were asleep between one look and the next.
std::map<std::string, long> sleepsOnceAsleep()
{
    std::map<std::string, long> sleeps = sleepsOfWatcherThreads();
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds{200});
        const std::map<std::string, long> now = sleepsOfWatcherThreads();
        if (now == sleeps)
            return now;
        sleeps = now;
    }
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Backends, FolderWatcherTest, bothBackends(), backendName);

TEST_P(FolderWatcherTest, WithoutFoldersThereIsNothingToStartOrStop)
{
    FolderWatcher watcher{{}, quietTime, [this] { m_calls.add(); }, options()};
    watcher.start();
    EXPECT_FALSE(watcher.isStarted());
    EXPECT_THAT(watcher.status(), IsEmpty());
    watcher.stop();
    EXPECT_FALSE(watcher.isStarted());
}

TEST_P(FolderWatcherTest, IsNotStartedByItsConstructor)
{
    m_watcher = std::make_unique<FolderWatcher>(
        std::vector{m_folder.url("root")}, quietTime, [this] { m_calls.add(); }, options());
    EXPECT_FALSE(m_watcher->isStarted());
    elsewhere("touch root/a");
    m_watcher->start();
    EXPECT_EQ(changes(), 0);
}

TEST_P(FolderWatcherTest, StartingTwiceWatchesOnce)
{
    watch();
    const auto threads = sleepsOfWatcherThreads().size();
    m_watcher->start();
    EXPECT_EQ(sleepsOfWatcherThreads().size(), threads);
    elsewhere("touch root/a");
    EXPECT_EQ(changes(), 1);
}

TEST_P(FolderWatcherTest, StoppingTwiceIsStoppingOnce)
{
    watch();
    m_watcher->stop();
    m_watcher->stop();
    EXPECT_FALSE(m_watcher->isStarted());
    EXPECT_FALSE(notices("touch root/a"));
}

TEST_P(FolderWatcherTest, CanBeStartedAgainAndSeesNothingFromBetween)
{
    watch();
    m_watcher->stop();
    elsewhere("touch root/between");
    m_watcher->start();
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("touch root/after"));
}

TEST_P(FolderWatcherTest, SeesNothingFromBeforeItsStart)
{
    elsewhere("mkdir -p root/a/b; touch root/old root/a/b/old");
    watch();
    EXPECT_EQ(changes(), 0);
}

TEST_P(FolderWatcherTest, TenEventsCloseTogetherLeadToOneCallOneSecondAfterTheTenth)
{
    watch();
    for (int event = 0; event < 10; ++event) {
        if (event > 0)
            m_time.advance(Seconds{0.2});
        elsewhere("echo x >> root/file");
        m_watcher->settle();
    }
    m_time.advance(Seconds{0.999});
    m_watcher->settle();
    EXPECT_EQ(m_calls.take(), 0);
    m_time.advance(Seconds{0.001});
    m_watcher->settle();
    EXPECT_EQ(m_calls.take(), 1);
}

TEST_P(FolderWatcherTest, StoppingInTheQuietSecondCancelsTheCall)
{
    watch();
    elsewhere("touch root/a");
    m_watcher->settle();
    m_watcher->stop();
    m_time.advance(Seconds{10});
    m_watcher->start();
    EXPECT_EQ(changes(), 0);
}

TEST_P(FolderWatcherTest, DestructionInTheQuietSecondCancelsTheCall)
{
    watch();
    elsewhere("touch root/a");
    m_watcher->settle();
    m_watcher.reset();
    m_time.advance(Seconds{10});
    EXPECT_EQ(m_calls.take(), 0);
}

TEST_P(FolderWatcherTest, StoppingWaitsForACallThatIsRunning)
{
    std::promise<void> begun;
    std::promise<void> mayEnd;
    std::atomic<bool> hasEnded = false;
    FolderWatcherOptions options = this->options();
    options.coalescing = Seconds{3600};
    FolderWatcher watcher{{m_folder.url("root")}, Seconds{0},
        [&] {
            begun.set_value();
            mayEnd.get_future().wait();
            hasEnded = true;
        },
        options};
    watcher.start();
    elsewhere("touch root/a");
    begun.get_future().wait();
    std::thread release{[&] {
        while (watcher.isStarted())
            std::this_thread::yield();
        mayEnd.set_value();
    }};
    watcher.stop();
    EXPECT_TRUE(hasEnded);
    release.join();
}

TEST_P(FolderWatcherTest, ACallMayStopItsWatcher)
{
    std::unique_ptr<FolderWatcher> watcher;
    watcher = std::make_unique<FolderWatcher>(
        std::vector{m_folder.url("root")}, Seconds{0},
        [&] {
            watcher->stop();
            m_calls.add();
        },
        options());
    watcher->start();
    elsewhere("touch root/a");
    ASSERT_TRUE(m_calls.reaches(1));
    EXPECT_FALSE(watcher->isStarted());
}

TEST_P(FolderWatcherTest, CallsOnItsQueue)
{
    std::string name(16, '\0');
    FolderWatcherOptions options = this->options();
    options.coalescing = Seconds{3600};
    FolderWatcher watcher{{m_folder.url("root")}, Seconds{0},
        [&] {
            ::pthread_getname_np(::pthread_self(), name.data(), name.size());
            m_calls.add();
        },
        options};
    watcher.start();
    elsewhere("touch root/a");
    ASSERT_TRUE(m_calls.reaches(1));
    EXPECT_STREQ(name.c_str(), "watcher");
}

TEST_P(FolderWatcherTest, ChangesArriveWithoutAnyoneAsking)
{
    FolderWatcherOptions options = this->options();
    options.time = nullptr;
    FolderWatcher watcher{
        {m_folder.url("root")}, Seconds{0.01}, [this] { m_calls.add(); }, options};
    watcher.start();
    for (int change = 1; change <= 3; ++change) {
        elsewhere("touch root/a" + std::to_string(change));
        ASSERT_TRUE(m_calls.reaches(change));
    }
}

TEST_P(FolderWatcherTest, TheFirstChangeIsDeliveredAtOnceAndWhatFollowsTogether)
{
    FolderWatcherOptions options = this->options();
    options.coalescing = Seconds{3600};
    m_watcher = std::make_unique<FolderWatcher>(
        std::vector{m_folder.url("root")}, Seconds{0}, [this] { m_calls.add(); }, options);
    m_watcher->start();
    elsewhere("touch root/a");
    ASSERT_TRUE(m_calls.reaches(1));
    for (int change = 0; change < 3; ++change)
        elsewhere("touch root/b" + std::to_string(change));
    m_watcher->settle();
    ASSERT_TRUE(m_calls.reaches(2));
    m_watcher->settle();
    EXPECT_EQ(m_calls.take(), 2);
}

TEST_P(FolderWatcherTest, EveryKindOfChangeIsOne)
{
    elsewhere("echo x > root/written; touch root/chmodded root/removed root/renamed root/linked");
    watch();
    EXPECT_TRUE(notices("touch root/made"));
    EXPECT_TRUE(notices("echo more >> root/written"));
    EXPECT_TRUE(notices("chmod 600 root/chmodded"));
    EXPECT_TRUE(notices("mv root/renamed root/renamed2"));
    EXPECT_TRUE(notices("rm root/removed"));
    EXPECT_TRUE(notices("ln root/linked root/hard"));
    EXPECT_TRUE(notices("ln -s nowhere root/soft"));
    EXPECT_TRUE(notices("mkfifo root/pipe"));
    EXPECT_TRUE(notices("mkdir root/folder"));
    EXPECT_TRUE(notices("chmod 700 root/folder"));
    EXPECT_TRUE(notices("rmdir root/folder"));
}

TEST_P(FolderWatcherTest, ReadingIsNoChange)
{
    elsewhere("echo x > root/a; mkdir root/b");
    watch();
    EXPECT_FALSE(notices("cat root/a; ls -lR root"));
}

TEST_P(FolderWatcherTest, WhatHappensBesideTheFoldersIsNoChange)
{
    elsewhere("mkdir beside root/in");
    watch();
    EXPECT_FALSE(notices("touch a beside/b; mkdir c; mv c d; rmdir d"));
    EXPECT_TRUE(notices("mv beside/b root/in/b"));
}

TEST_P(FolderWatcherTest, SaysThatItWatchesEverything)
{
    elsewhere("mkdir -p root/a/b");
    watch();
    EXPECT_EQ(status(),
        (WatchStatus{
            FileURL::directory(path("root")), WatchStatus::Coverage::full, GetParam(), {}}));
    m_watcher->stop();
    EXPECT_THAT(m_watcher->status(), IsEmpty());
}

TEST_P(FolderWatcherTest, SleepsWhileNothingHappensInItsFolders)
{
    elsewhere("mkdir -p up/root/a/b beside");
    watch({"up/root"});
    elsewhere("touch up/root/a/b/c");
    EXPECT_EQ(changes(), 1);
    const auto before = sleepsOnceAsleep();
    ASSERT_THAT(before, testing::SizeIs(2));
    // A second in which there is much to see elsewhere.
    elsewhere("for i in 1 2 3 4 5 6 7 8 9 10; do touch beside/$i; cat beside/$i; sleep 0.1; done");
    EXPECT_EQ(sleepsOfWatcherThreads(), before);
    EXPECT_TRUE(notices("touch up/root/a/b/d"));
}

TEST_P(FolderWatcherTest, ManyWatchersComeAndGo)
{
    for (int i = 0; i < 50; ++i) {
        FolderWatcher watcher{
            {m_folder.url("root")}, Seconds{0}, [this] { m_calls.add(); }, options()};
        watcher.start();
        if (i % 2 == 0)
            elsewhere("echo x >> root/a");
        watcher.stop();
        const int calls = m_calls.take();
        EXPECT_LE(calls, 3);
    }
}

}  // namespace tidemark
