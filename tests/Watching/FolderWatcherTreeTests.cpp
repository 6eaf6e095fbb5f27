#include "WatcherFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace tidemark {

namespace {

class FolderTreeTest : public WatcherTest { };

/// The memory that this process takes up now, in bytes.
long residentBytes()
{
    std::ifstream status{"/proc/self/statm"};
    long total = 0;
    long resident = 0;
    status >> total >> resident;
    return resident * 4096;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Backends, FolderTreeTest, bothBackends(), backendName);

TEST_P(FolderTreeTest, SeesChangesAtAnyDepth)
{
    elsewhere("mkdir -p root/a/b/c/d/e/f/g/h");
    watch();
    EXPECT_TRUE(notices("touch root/a/b/c/d/e/f/g/h/new"));
    EXPECT_TRUE(notices("rm root/a/b/c/d/e/f/g/h/new"));
    EXPECT_TRUE(notices("touch root/a/b/c/new"));
}

TEST_P(FolderTreeTest, SeesWhatIsMadeInANewFolderAtOnce)
{
    watch();
    EXPECT_TRUE(notices("mkdir -p root/n1/n2/n3/n4; touch root/n1/n2/n3/n4/x"));
    EXPECT_TRUE(notices("touch root/n1/n2/n3/n4/y"));
    EXPECT_TRUE(notices("touch root/n1/n2/z"));
}

TEST_P(FolderTreeTest, SeesADeepChangeMadeBeforeTheFoldersThereWereLookedUp)
{
    elsewhere("mkdir -p root/a/b/c/d");
    m_gate.close();
    m_watcher = std::make_unique<FolderWatcher>(
        std::vector{m_folder.url("root")}, quietTime, [this] { m_calls.add(); }, options());
    m_watcher->start();
    // File times follow the kernel's clock, which ticks only every few milliseconds.
    elsewhere("sleep 0.05; touch root/a/b/c/d/new");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
}

TEST_P(FolderTreeTest, SeesChangesInAFolderThatWasMovedIn)
{
    elsewhere("mkdir -p in/p/q");
    watch();
    EXPECT_TRUE(notices("mv in root/in"));
    EXPECT_TRUE(notices("touch root/in/p/q/z"));
}

TEST_P(FolderTreeTest, IgnoresAFolderThatWasMovedOutUntilItComesBack)
{
    elsewhere("mkdir -p root/in/p/q");
    watch();
    EXPECT_TRUE(notices("mv root/in out"));
    EXPECT_FALSE(notices("touch out/f out/p/q/f; mkdir out/p/q/r"));
    EXPECT_TRUE(notices("mv out root/back"));
    EXPECT_TRUE(notices("touch root/back/p/q/g"));
    EXPECT_TRUE(notices("touch root/back/p/q/r/h"));
}

TEST_P(FolderTreeTest, FollowsAFolderThatIsRenamedWithinTheTree)
{
    elsewhere("mkdir -p root/a/b/c root/other");
    watch();
    EXPECT_TRUE(notices("mv root/a root/other/a2"));
    EXPECT_TRUE(notices("touch root/other/a2/b/c/x"));
    EXPECT_TRUE(notices("mkdir root/other/a2/b/c/d"));
    EXPECT_TRUE(notices("touch root/other/a2/b/c/d/x"));
}

TEST_P(FolderTreeTest, FollowsAFolderThatWasDeletedAndMadeAgain)
{
    elsewhere("mkdir -p root/a/b");
    watch();
    EXPECT_TRUE(notices("rm -r root/a; mkdir -p root/a/b"));
    EXPECT_TRUE(notices("touch root/a/b/x"));
}

TEST_P(FolderTreeTest, FollowsAFolderThatIsMadeAgainBeforeAnyoneLooked)
{
    elsewhere("mkdir -p root/a/b");
    watch();
    m_gate.close();
    elsewhere("rmdir root/a/b; rmdir root/a; mkdir root/a; mkdir root/a/b; rmdir root/a/b; mkdir "
              "root/a/b");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch root/a/b/x"));
}

TEST_P(FolderTreeTest, FollowsFoldersThatChangePlacesBeforeAnyoneLooked)
{
    elsewhere("mkdir -p root/a/in_a root/b/in_b");
    watch();
    m_gate.close();
    elsewhere("mv root/a root/c; mv root/b root/a; mv root/c root/b");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch root/a/in_b/x"));
    EXPECT_TRUE(notices("touch root/b/in_a/x"));
}

TEST_P(FolderTreeTest, FollowsAFolderThatTakesThePlaceOfItsParentBeforeAnyoneLooked)
{
    elsewhere("mkdir -p root/a/b/c");
    watch();
    m_gate.close();
    elsewhere("mv root/a/b root/b; mv root/a away; mv root/b root/a");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch root/a/x"));
    EXPECT_TRUE(notices("touch root/a/c/x"));
}

TEST_P(FolderTreeTest, FollowsAFolderWhoseParentMovedWhileItWasMade)
{
    elsewhere("mkdir -p root/a/b root/c");
    watch();
    m_gate.close();
    elsewhere("mkdir root/a/b/new; mv root/a root/c/a; mkdir root/c/a/b/newer; mv root/c root/d");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("touch root/d/a/b/new/x"));
    EXPECT_TRUE(notices("touch root/d/a/b/newer/x"));
}

TEST_P(FolderTreeTest, AFileThatTakesTheNameOfAFolderIsWatchedAsAFile)
{
    elsewhere("mkdir -p root/a/b");
    watch();
    EXPECT_TRUE(notices("rm -r root/a; touch root/a"));
    EXPECT_TRUE(notices("echo x >> root/a"));
    EXPECT_TRUE(notices("rm root/a; mkdir root/a"));
    EXPECT_TRUE(notices("touch root/a/x"));
}

TEST_P(FolderTreeTest, DoesNotFollowLinksInTheTree)
{
    elsewhere("mkdir beside; ln -s ../beside root/link; ln -s . root/loop");
    watch();
    EXPECT_FALSE(notices("touch beside/x"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
}

TEST_P(FolderTreeTest, WatchesNamesOfAnyBytes)
{
    watch();
    EXPECT_TRUE(notices(
        "mkdir -p \"root/a b/$(printf 'x\\ny')/\\$'\\\"\"; mkdir \"root/$(printf '\\377')\""));
    EXPECT_TRUE(notices("touch \"root/a b/$(printf 'x\\ny')/file\""));
    EXPECT_TRUE(notices("touch \"root/$(printf '\\377')/file\""));
}

TEST_P(FolderTreeTest, OneFolderInsideAnotherIsWatchedOnceAndBothAreFull)
{
    elsewhere("mkdir -p root/a/b");
    watch({"root", "root/a"});
    EXPECT_EQ(status(0).coverage, WatchStatus::Coverage::full);
    EXPECT_EQ(status(1).coverage, WatchStatus::Coverage::full);
    elsewhere("touch root/a/b/x");
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("mv root/a root/c"));
    EXPECT_TRUE(notices("touch root/c/b/x"));
    EXPECT_EQ(status(1).coverage, WatchStatus::Coverage::none);
    EXPECT_TRUE(notices("mv root/c root/a"));
    EXPECT_TRUE(notices("touch root/a/b/y"));
    EXPECT_EQ(status(1).coverage, WatchStatus::Coverage::full);
}

TEST_P(FolderTreeTest, TheSameFolderTwiceIsWatchedOnce)
{
    elsewhere("mkdir -p root/a; ln -s root again");
    watch({"root", "again", "root"});
    elsewhere("touch root/a/x");
    EXPECT_EQ(changes(), 1);
    EXPECT_TRUE(notices("rm again"));
    EXPECT_EQ(status(1).coverage, WatchStatus::Coverage::none);
    EXPECT_TRUE(notices("touch root/a/y"));
}

TEST_P(FolderTreeTest, WhenTheKernelLosesEventsThatIsOneChange)
{
    elsewhere("mkdir root/a");
    watch();
    m_gate.close();
    // More than a queue of the kernel holds, and then a folder that no event tells of.
    elsewhere("cd root/a; seq 20000 | xargs touch; mkdir -p lost/deep");
    m_gate.open();
    EXPECT_EQ(changes(), 1);
    EXPECT_EQ(changes(), 0);
    EXPECT_TRUE(notices("touch root/a/lost/deep/x"));
    EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
}

TEST_P(FolderTreeTest, ABurstOfAHundredThousandFilesTakesNoMemory)
{
    watch();
    EXPECT_TRUE(notices("touch root/warm"));
    const long before = residentBytes();
    elsewhere("cd root; seq 100000 | xargs touch");
    EXPECT_EQ(changes(), 1);
    EXPECT_LT(residentBytes() - before, 32L << 20);
    EXPECT_TRUE(notices("rm root/99999"));
}

TEST_P(FolderTreeTest, FoldersThatLeaveAgainAndAgainDoNotUseUpTheWatches)
{
    elsewhere("cd root; seq -f in/%g/deep 1000 | xargs mkdir -p");
    FolderWatcherOptions options = this->options();
    options.watchLimit = 3000;
    watch({"root"}, options);
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(notices("mv root/in out"));
        EXPECT_TRUE(notices("cp -r out root/in; rm -r out"));
        EXPECT_TRUE(notices("touch root/in/1000/deep/x"));
        EXPECT_EQ(status().coverage, WatchStatus::Coverage::full);
    }
    EXPECT_EQ(m_limits.take(), 0);
}

}  // namespace tidemark
