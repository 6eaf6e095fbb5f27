#include "WatcherFixture.h"

#include "PrivateMounts.h"

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace tidemark {

namespace {

class WatchedRootTest : public WatcherTest {
protected:
    /// So that permissions count for the watcher when root runs the test. The threads of a watcher that is
    /// started as an ordinary user act as one.
    void giveToOrdinaryUser(const std::string& folders) const
    {
        if (::geteuid() == 0)
            elsewhere("chown 65534 " + folders);
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Backends, WatchedRootTest, bothBackends(), backendName);

TEST_P(WatchedRootTest, AMissingFolderIsTakenUpWhenItIsMade)
{
    watch({"late/er/here"});
    EXPECT_EQ(changes(), 0);
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
    EXPECT_EQ(status().reason, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(notices("mkdir late"));
    EXPECT_TRUE(notices("mkdir -p late/er/here/a"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
    EXPECT_TRUE(notices("touch late/er/here/a/x"));
}

TEST_P(WatchedRootTest, ADeletedFolderIsTakenUpWhenItIsMadeAgain)
{
    elsewhere("mkdir root/a");
    watch();
    EXPECT_TRUE(notices("rm -r root"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
    EXPECT_FALSE(notices("touch beside"));
    EXPECT_TRUE(notices("mkdir -p root/k"));
    EXPECT_TRUE(notices("touch root/k/x"));
}

TEST_P(WatchedRootTest, AFolderThatIsMadeAgainBeforeAnyoneLookedIsTakenUp)
{
    elsewhere("mkdir root/a");
    watch();
    m_gate.close();
    elsewhere("rm -r root; mkdir -p root/a/b");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch root/x"));
    EXPECT_TRUE(notices("touch root/a/b/x"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
}

TEST_P(WatchedRootTest, AFolderThatIsDeletedWhileAProgramIsInItIsTakenUpWhenItIsMadeAgain)
{
    watch();
    elsewhere("cd root; rmdir ../root; touch ../beside; mkdir ../root");
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch root/x"));
}

TEST_P(WatchedRootTest, ARenamedFolderIsWatchedNoLongerUntilItComesBack)
{
    elsewhere("mkdir -p root/a/b");
    watch();
    EXPECT_TRUE(notices("mv root away"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
    EXPECT_FALSE(notices("touch away/x away/a/b/x"));
    EXPECT_TRUE(notices("mv away root"));
    EXPECT_TRUE(notices("touch root/a/b/y"));
}

TEST_P(WatchedRootTest, AnotherFolderInItsPlaceIsWatchedInstead)
{
    elsewhere("mkdir -p root/a other/o");
    watch();
    EXPECT_TRUE(notices("mv root away; mv other root"));
    EXPECT_TRUE(notices("touch root/o/x"));
    EXPECT_FALSE(notices("touch away/a/x"));
}

TEST_P(WatchedRootTest, AParentThatIsRenamedAndComesBackKeepsTheFolder)
{
    elsewhere("mkdir -p up/down/here/a");
    watch({"up/down/here"});
    EXPECT_TRUE(notices("mv up away"));
    EXPECT_FALSE(notices("touch away/down/here/a/x"));
    EXPECT_TRUE(notices("mv away up"));
    EXPECT_TRUE(notices("touch up/down/here/a/y"));
    m_gate.close();
    elsewhere("mv up away; mkdir away/down/here/a/new; mv away up");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch up/down/here/a/new/z"));
}

TEST_P(WatchedRootTest, ALinkIsFollowedWhereverItPoints)
{
    elsewhere("mkdir -p one/d two/d; ln -s one link");
    watch({"link"});
    EXPECT_TRUE(notices("touch one/d/x"));
    EXPECT_FALSE(notices("touch two/d/x"));
    EXPECT_TRUE(notices("ln -sfn two link"));
    EXPECT_TRUE(notices("touch two/d/y"));
    EXPECT_FALSE(notices("touch one/d/y"));
    EXPECT_TRUE(notices("rm link"));
    EXPECT_TRUE(notices("ln -s one link"));
    EXPECT_TRUE(notices("touch one/d/z"));
}

TEST_P(WatchedRootTest, ALinkOnTheWayToTheTargetIsFollowedToo)
{
    elsewhere("mkdir -p one/in/d two/in/d; ln -s one via; ln -s via/in link");
    watch({"link"});
    EXPECT_TRUE(notices("touch one/in/d/x"));
    EXPECT_TRUE(notices("ln -sfn two via"));
    EXPECT_TRUE(notices("touch two/in/d/x"));
}

TEST_P(WatchedRootTest, ADanglingLinkIsTakenUpWhenItsTargetIsMade)
{
    elsewhere("ln -s target link");
    watch({"link"});
    EXPECT_TRUE(notices("mkdir target"));
    EXPECT_TRUE(notices("touch target/x"));
}

TEST_P(WatchedRootTest, ALinkThatComesToPointIntoItsOldTarget)
{
    elsewhere("mkdir -p one/two/three; ln -s one link");
    watch({"link"});
    EXPECT_TRUE(notices("ln -sfn one/two link"));
    EXPECT_TRUE(notices("touch one/two/three/x"));
    EXPECT_FALSE(notices("touch one/x"));
    EXPECT_TRUE(notices("ln -sfn one link"));
    EXPECT_TRUE(notices("touch one/two/three/y"));
    EXPECT_TRUE(notices("touch one/y"));
}

TEST_P(WatchedRootTest, AFileIsNotWatchedUntilAFolderTakesItsPlace)
{
    elsewhere("touch file");
    watch({"file"});
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
    EXPECT_EQ(status().reason, std::errc::not_a_directory);
    EXPECT_TRUE(notices("rm file; mkdir file"));
    EXPECT_TRUE(notices("touch file/x"));
}

TEST_P(WatchedRootTest, SeveralFoldersAreIndependent)
{
    elsewhere("mkdir -p one/a two/a");
    watch({"one", "missing", "two"});
    EXPECT_EQ(status(0).coverage, WatchStatus::Coverage::full);
    EXPECT_EQ(status(1).coverage, WatchStatus::Coverage::none);
    EXPECT_EQ(status(2).coverage, WatchStatus::Coverage::full);
    EXPECT_TRUE(notices("rm -r one"));
    EXPECT_TRUE(notices("touch two/a/x"));
}

TEST_P(WatchedRootTest, AFolderWithoutPermissionIsTakenUpWhenThePermissionIsGiven)
{
    const ScopedOrdinaryUser user{m_folder};
    giveToOrdinaryUser("root");
    elsewhere("chmod 0 root");
    watch();
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
    EXPECT_EQ(status().reason, std::errc::permission_denied);
    EXPECT_TRUE(notices("chmod 700 root"));
    EXPECT_TRUE(notices("touch root/x"));
}

TEST_P(WatchedRootTest, AFolderBelowWithoutPermissionIsSaidAndTakenUpWhenThePermissionIsGiven)
{
    const ScopedOrdinaryUser user{m_folder};
    elsewhere("mkdir -p root/a/b");
    giveToOrdinaryUser("root root/a root/a/b");
    elsewhere("chmod 0 root/a");
    watch();
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::partial);
    EXPECT_EQ(status().reason, std::errc::permission_denied);
    EXPECT_TRUE(notices("chmod 700 root/a"));
    EXPECT_TRUE(notices("touch root/a/b/x"));
}

TEST_P(WatchedRootTest, AnUnmountedFolderIsTakenUpWhenItIsMountedAgain)
{
    testWithPrivateMounts([this] {
        mountMemory(path("root"));
        otherProcess("mkdir -p " + path("root/a"));
        watch();
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
        EXPECT_TRUE(notices("touch root/a/x"));
        ASSERT_EQ(::umount(path("root").c_str()), 0) << "the watcher must not keep it busy";
        EXPECT_EQ(changes(), 1);
        EXPECT_TRUE(notices("touch root/underneath"));
        mountMemory(path("root"));
        EXPECT_EQ(changes(), 1);
        EXPECT_TRUE(notices("touch root/x"));
        m_watcher.reset();
    });
}

TEST_P(WatchedRootTest, AFolderOnAFileSystemThatIsUnmountedGoesAndComes)
{
    testWithPrivateMounts([this] {
        mountMemory(path("root"));
        otherProcess("mkdir -p " + path("root/in/a"));
        watch({"root/in"});
        ASSERT_EQ(::umount(path("root").c_str()), 0);
        EXPECT_EQ(changes(), 1);
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::none);
        mountMemory(path("root"));
        EXPECT_EQ(changes(), 0);
        EXPECT_TRUE(notices("mkdir root/in"));
        EXPECT_TRUE(notices("touch root/in/x"));
        m_watcher.reset();
    });
}

TEST_P(WatchedRootTest, AFileSystemMountedBelowTheFolderIsWatchedToo)
{
    elsewhere("mkdir -p 'root/a b/mnt'");
    testWithPrivateMounts([this] {
        watch();
        mountMemory(path("root/a b/mnt"));
        EXPECT_EQ(changes(), 1);
        EXPECT_TRUE(notices("cd 'root/a b/mnt'; mkdir b; touch b/x"));
        EXPECT_TRUE(notices("touch 'root/a b/mnt/b/y'"));
        ASSERT_EQ(::umount(path("root/a b/mnt").c_str()), 0);
        EXPECT_EQ(changes(), 1);
        EXPECT_TRUE(notices("touch 'root/a b/mnt/x'"));
        m_watcher.reset();
    });
}

TEST_P(WatchedRootTest, AFolderMountedOnceMoreBelowItselfDoesNotGoOnForever)
{
    elsewhere("mkdir -p root/a/again");
    testWithPrivateMounts([this] {
        mountAgain(path("root"), path("root/a/again"));
        watch();
        EXPECT_TRUE(notices("touch root/a/x"));
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
        m_watcher.reset();
    });
}

}  // namespace tidemark
