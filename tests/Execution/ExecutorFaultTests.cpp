#include "ExecutionFixture.h"
#include "FaultInjectingFileManager.h"

#include <gtest/gtest.h>

#include <set>

using namespace tidemark;

namespace {

using Contents = std::multiset<std::string>;

const Contents everything{"A", "B", "C", "D", "occupant"};

void fill(InMemoryFileManager& disk)
{
    for (const auto& [path, content] : {std::pair("/in/a", "A"), std::pair("/in/b", "B"),
             std::pair("/in/c", "C"), std::pair("/in/d", "D"), std::pair("/out/a", "occupant")})
        disk.addFile(path, content);
}

std::vector<PlannedAction> actionsOfEveryKind()
{
    return {moving("/in/a", "/out"), planned("/in/b", SweepAction::trash()),
        planned("/in/c", SweepAction::rename("c2")),
        planned("/in/d", SweepAction::fileInto(FileURL::directory("/new/x"), "d2"))};
}

Contents userFiles(InMemoryFileManager& disk)
{
    Contents contents = disk.contentsOfEveryFile();
    if (const auto journal = disk.content(journalURL.path()))
        contents.erase(contents.find(*journal));
    return contents;
}

/// Every file that is no longer at its place, but for the one in the Trash, is named by the journal.
void expectEveryMovedFileIsJournaled(InMemoryFileManager& disk)
{
    std::set<std::string> known;
    for (const SweepRecord& sweep : journalOn(disk).load().sweeps) {
        for (const JournalEntry& entry : sweep.entries)
            known.insert(entry.to);
    }
    for (const auto& [path, content] :
        {std::pair("/out/a 2", "A"), std::pair("/in/c2", "C"), std::pair("/new/x/d2", "D")}) {
        if (disk.content(path) == content) {
            EXPECT_TRUE(known.contains(path)) << path;
        }
    }
}

constexpr std::errc errors[]{std::errc::no_space_on_device, std::errc::permission_denied,
    std::errc::io_error, std::errc::read_only_file_system};

}  // namespace

TEST(ExecutorFaults, AFaultAtAnyCallOfASweepLeavesEveryFileExactlyOnce)
{
    for (const std::errc error : errors) {
        for (int call = 0;; ++call) {
            SCOPED_TRACE(testing::Message() << "fault at file call " << call);
            InMemoryFileManager disk;
            fill(disk);
            FaultInjectingFileManager files{disk, failAt(call, error)};
            try {
                sweep(files, actionsOfEveryKind());
            } catch (const std::filesystem::filesystem_error&) {
                EXPECT_EQ(disk.content("/in/a"), "A");  // the journal could not be loaded
            }
            EXPECT_EQ(userFiles(disk), everything);
            expectEveryMovedFileIsJournaled(disk);
            if (!files.faultFired())
                break;
        }
    }
}

TEST(ExecutorFaults, ACallThatWorksButReportsAFaultLosesNoFileEither)
{
    for (int call = 0;; ++call) {
        SCOPED_TRACE(testing::Message() << "fault after file call " << call);
        InMemoryFileManager disk;
        fill(disk);
        FaultInjectingFileManager files{disk, afterTheEffect(failAt(call, std::errc::io_error))};
        try {
            sweep(files, actionsOfEveryKind());
            executorOn(files).undoLastSweep(sweepTime);
        } catch (const std::filesystem::filesystem_error&) {
            // Whatever stopped: every file has to be somewhere.
        }
        EXPECT_EQ(userFiles(disk), everything);
        if (!files.faultFired())
            break;
    }
}

TEST(ExecutorFaults, AFaultAtAnyCallOfAnUndoLeavesEveryFileExactlyOnceAndASecondUndoFinishes)
{
    for (const std::errc error : errors) {
        for (int call = 0;; ++call) {
            SCOPED_TRACE(testing::Message() << "fault at file call " << call);
            InMemoryFileManager disk;
            fill(disk);
            sweep(disk, actionsOfEveryKind());
            FaultInjectingFileManager files{disk, failAt(call, error)};
            bool isUndone = true;
            try {
                executorOn(files).undoLastSweep(sweepTime);
            } catch (const std::filesystem::filesystem_error&) {
                isUndone = false;
            }
            EXPECT_EQ(userFiles(disk), everything);
            if (!isUndone) {
                EXPECT_EQ(journalOn(disk).load().sweeps.size(), 1U);
                executorOn(disk).undoLastSweep(sweepTime);
            }
            EXPECT_EQ(disk.content("/in/a"), "A");
            EXPECT_EQ(disk.content("/in/b"), "B");
            EXPECT_EQ(disk.content("/in/c"), "C");
            EXPECT_EQ(disk.content("/in/d"), "D");
            if (!files.faultFired())
                break;
        }
    }
}
