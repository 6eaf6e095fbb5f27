#include "WatcherFixture.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

namespace tidemark {

namespace {

/// Changes made by this process, told to the log as the file manager does.
class OwnChangeTest : public WatcherTest {
protected:
    void make(const std::string& file)
    {
        const auto change = m_ownChanges.begin({url(file)});
        const int opened = ::open(path(file).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        ASSERT_GE(opened, 0);
        EXPECT_EQ(::write(opened, "x", 1), 1);
        EXPECT_EQ(::close(opened), 0);
    }

    void makeFolder(const std::string& folder)
    {
        const auto change = m_ownChanges.begin({url(folder)});
        EXPECT_EQ(::mkdir(path(folder).c_str(), 0700), 0);
    }

    void move(const std::string& from, const std::string& to)
    {
        const auto change = m_ownChanges.begin({url(from), url(to)});
        EXPECT_EQ(::rename(path(from).c_str(), path(to).c_str()), 0);
    }

    void setMode(const std::string& file)
    {
        const auto change = m_ownChanges.begin({url(file)});
        EXPECT_EQ(::chmod(path(file).c_str(), 0640), 0);
    }

    void remove(const std::string& entry)
    {
        const auto change = m_ownChanges.begin({url(entry)});
        EXPECT_EQ(::remove(path(entry).c_str()), 0);
    }

    FileURL url(const std::string& relative) const { return FileURL{path(relative)}; }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Backends, OwnChangeTest, bothBackends(), backendName);

TEST_P(OwnChangeTest, MovesByThisProcessIntoAWatchedFolderAreSilent)
{
    elsewhere("mkdir root/a; touch outside");
    watch();
    move("outside", "root/a/inside");
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("touch root/a/other"));
}

TEST_P(OwnChangeTest, NothingThatThisProcessDoesIsAChange)
{
    elsewhere("mkdir root/a");
    watch();
    make("root/own");
    move("root/own", "root/own2");
    move("root/own2", "root/a/own3");
    setMode("root/a/own3");
    remove("root/a/own3");
    makeFolder("root/folder");
    move("root/folder", "root/a/folder");
    remove("root/a/folder");
    EXPECT_EQ(changes(), 0);
}

TEST_P(OwnChangeTest, OtherThreadsOfThisProcessAreThisProcess)
{
    watch();
    std::thread{[this] {
        make("root/own");
        move("root/own", "root/own2");
    }}.join();
    EXPECT_EQ(changes(), 0);
}

TEST_P(OwnChangeTest, AFolderThatThisProcessMadeIsWatched)
{
    watch();
    makeFolder("root/own");
    makeFolder("root/own/deep");
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("touch root/own/deep/x"));
}

TEST_P(OwnChangeTest, AFolderThatThisProcessMovedIsWatchedAtItsNewPlace)
{
    elsewhere("mkdir -p root/a/b/c root/d");
    watch();
    move("root/a", "root/d/a");
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("touch root/d/a/b/c/x"));
}

TEST_P(OwnChangeTest, WhatThisProcessOnceChangedIsAChangeWhenOthersDoItAgain)
{
    watch();
    make("root/file");
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("mv root/file root/other"));
    EXPECT_TRUE(notices("mv root/other root/file"));
}

TEST_P(OwnChangeTest, OneForeignChangeAmongFiveHundredOwnMovesIsTheOnlyOne)
{
    watch();
    for (int i = 0; i < 500; ++i) {
        const std::string file = "root/" + std::to_string(i);
        make(file);
        move(file, file + "x");
    }
    EXPECT_EQ(changes(), 0);
    for (int i = 0; i < 500; ++i) {
        const std::string file = "root/" + std::to_string(i) + "x";
        move(file, file + "y");
        if (i == 250)
            elsewhere("touch root/needle");
    }
    EXPECT_EQ(changes(), 1);
    EXPECT_EQ(m_ownChanges.size(), 0U);
}

TEST_P(OwnChangeTest, AChangeByAChildOfThisProcessIsForeign)
{
    watch();
    EXPECT_TRUE(notices("touch root/by-child"));
}

TEST_P(OwnChangeTest, OwnChangesThroughALinkAreSilent)
{
    elsewhere("mkdir real; ln -s real link");
    watch({"link"});
    make("link/own");
    move("real/own", "link/own2");
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("touch link/x"));
}

}  // namespace tidemark
