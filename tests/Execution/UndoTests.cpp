#include "DecodingError.h"
#include "ExecutionFixture.h"
#include "FaultInjectingFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;
using Op = JournalEntry::Op;

static std::optional<SweepRecord> undo(FileManager& disk, UndoObserver* observer = nullptr)
{
    return executorOn(disk).undoLastSweep(sweepTime, observer);
}

TEST(Undo, BringsEveryKindOfActionBack)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}, {"/in/d", "D"}};
    const SweepRecord record = sweep(disk,
        {moving("/in/a", "/out"), planned("/in/b", SweepAction::trash()),
            planned("/in/c", SweepAction::rename("c2")),
            planned("/in/d", SweepAction::fileInto(FileURL::directory("/out/x"), "new"))});

    EXPECT_EQ(undo(disk), record);
    for (const auto& [path, content] : {std::pair("/in/a", "A"), std::pair("/in/b", "B"),
             std::pair("/in/c", "C"), std::pair("/in/d", "D")})
        EXPECT_EQ(disk.content(path), content);
    EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
}

TEST(Undo, GoesBackThroughTheJournalSweepBySweep)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    const SweepRecord first = sweep(disk, {moving("/in/a", "/out")});
    const SweepRecord second = sweep(disk, {moving("/in/b", "/out")});

    EXPECT_EQ(undo(disk), second);
    EXPECT_EQ(disk.content("/out/a"), "A");
    EXPECT_THAT(journalOn(disk).load().sweeps, ElementsAre(first));
    EXPECT_EQ(undo(disk), first);
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(undo(disk), std::nullopt);
}

TEST(Undo, ReturnsNothingAndWritesNothingWithAnEmptyJournal)
{
    InMemoryFileManager disk;
    EXPECT_EQ(undo(disk), std::nullopt);
    EXPECT_TRUE(disk.tree().empty());

    disk.addFile(journalURL.path(), R"({"sweeps":[]})");
    EXPECT_EQ(undo(disk), std::nullopt);
    EXPECT_EQ(disk.content(journalURL.path()), R"({"sweeps":[]})");
}

TEST(Undo, RemovesARecordWithoutEntries)
{
    InMemoryFileManager disk;
    journalOn(disk).save({{{.startedAt = sweepTime, .entries = {}}}});

    EXPECT_THAT(undo(disk)->entries, IsEmpty());
    EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
}

TEST(Undo, BringsBackTheOthersAfterTheTrashWasEmptied)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    sweep(disk, {planned("/in/a", SweepAction::trash()), moving("/in/b", "/out")});
    disk.remove("/trash/files/a");

    EXPECT_TRUE(undo(disk));
    EXPECT_EQ(disk.content("/in/b"), "B");
    EXPECT_FALSE(disk.fileExists(FileURL("/in/a")));
    EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
}

TEST(Undo, PutsAFileBesideANewOneOfItsName)
{
    InMemoryFileManager disk{{"/in/report.pdf", "old"}};
    sweep(disk, {moving("/in/report.pdf", "/out")});
    disk.addFile("/in/report.pdf", "new");

    undo(disk);

    EXPECT_EQ(disk.content("/in/report.pdf"), "new");
    EXPECT_EQ(disk.content("/in/report 2.pdf"), "old");
}

TEST(Undo, MakesTheFormerFolderAgain)
{
    InMemoryFileManager disk{{"/home/in/a", "A"}};
    sweep(disk, {moving("/home/in/a", "/out")});
    disk.remove("/home");

    undo(disk);

    EXPECT_EQ(disk.content("/home/in/a"), "A");
}

TEST(Undo, WalksBackwardsSoThatNamesThatWereFreedAreFreeAgain)
{
    // b takes the name that a's move had freed; undone in order, a would find its name taken.
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    sweep(disk, {moving("/in/a", "/out"), planned("/in/b", SweepAction::rename("a"))});
    ASSERT_EQ(disk.content("/in/a"), "B");

    undo(disk);

    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(disk.content("/in/b"), "B");
}

TEST(Undo, UsesANameAgainThatItHasFoundTakenAndThenFreedItself)
{
    InMemoryFileManager disk{{"/x/a", "X"}, {"/in/a", "B"}, {"/y/a", "Y"}};
    journalOn(disk).save({{{.startedAt = sweepTime,
        .entries = {entry(Op::move, "/in/a", "/x/a"), entry(Op::rename, "/in/b", "/in/a"),
            entry(Op::move, "/in/a", "/y/a")}}}});

    undo(disk);

    for (const auto& [path, content] :
        {std::pair("/in/a 2", "Y"), std::pair("/in/b", "B"), std::pair("/in/a", "X")})
        EXPECT_EQ(disk.content(path), content);
}

TEST(Undo, MovesNothingForATrashWithoutPlaceUnlessAFileHasAppearedThere)
{
    InMemoryFileManager disk{{"/in/setup.dmg", "old"}};
    disk.hideTrashLocation();
    sweep(disk, {planned("/in/setup.dmg", SweepAction::trash())});
    const std::string journal = disk.content(journalURL.path()).value();

    undo(disk);
    EXPECT_FALSE(disk.fileExists(FileURL("/in/setup.dmg")));

    disk.remove(journalURL.path());
    disk.addFile(journalURL.path(), journal);
    disk.addFile("/in/setup.dmg", "new");
    undo(disk);
    EXPECT_EQ(disk.content("/in/setup 2.dmg"), "new");
}

TEST(Undo, StopsAtTheFirstFailureAndGoesOnNextTime)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
    const SweepRecord record =
        sweep(disk, {moving("/in/a", "/out"), moving("/in/b", "/out"), moving("/in/c", "/out")});
    {
        FaultInjectingFileManager files{
            disk, failEvery(FileCall::moveItem, FileURL("/out/b"), std::errc::io_error)};
        EXPECT_THROW(undo(files), std::filesystem::filesystem_error);
    }
    EXPECT_EQ(disk.content("/in/c"), "C");
    EXPECT_EQ(disk.content("/out/b"), "B");
    EXPECT_EQ(disk.content("/out/a"), "A");
    EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});

    EXPECT_EQ(undo(disk), record);
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(disk.content("/in/b"), "B");
    EXPECT_EQ(disk.content("/in/c"), "C");
    EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
}

TEST(Undo, KeepsTheRecordUntilTheMovesHaveReachedTheDisk)
{
    for (const char* folder : {"/in", "/out"}) {
        InMemoryFileManager disk{{"/in/a", "A"}};
        const SweepRecord record = sweep(disk, {moving("/in/a", "/out")});
        FaultInjectingFileManager files{
            disk, failEvery(FileCall::flushDirectory, FileURL(folder), std::errc::io_error)};

        EXPECT_THROW(undo(files), std::filesystem::filesystem_error) << folder;
        EXPECT_EQ(disk.content("/in/a"), "A");
        EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});
    }
}

TEST(Undo, KeepsTheRecordWhenItCannotTellWhetherAFileIsThere)
{
    // A disk that does not answer is no empty Trash: taking it for one would forget the file.
    InMemoryFileManager disk{{"/in/a", "A"}};
    const SweepRecord record = sweep(disk, {moving("/in/a", "/out")});
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::fileExists, FileURL("/out/a"), std::errc::io_error)};

    EXPECT_THROW(undo(files), std::filesystem::filesystem_error);
    EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});
}

TEST(Undo, CountsWhatNoFileSystemCanHoldAsGone)
{
    InMemoryFileManager disk{{"/out/a", "A"}};
    Journal journal;
    journal.sweeps.push_back({.startedAt = sweepTime, .entries = {}});
    for (const std::string& path :
        {std::string(), std::string("relative"), std::string("/a\0b", 4)})
        journal.sweeps[0].entries.push_back(entry(Op::move, "/in/x", path));
    journal.sweeps[0].entries.push_back(entry(Op::move, "/in/a", "/out/a"));
    journalOn(disk).save(journal);

    EXPECT_TRUE(undo(disk));
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
}

TEST(Undo, PassesOnThatTheJournalCannotBeLoadedOrSaved)
{
    InMemoryFileManager torn{{journalURL.path(), "{"}};
    EXPECT_THROW(undo(torn), DecodingError);
    EXPECT_EQ(torn.content(journalURL.path()), "{");

    InMemoryFileManager disk{{"/in/a", "A"}};
    sweep(disk, {moving("/in/a", "/out")});
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)};
    EXPECT_THROW(undo(files), std::filesystem::filesystem_error);
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(journalOn(disk).load().sweeps.size(), 1U);
}

TEST(Undo, TellsItsObserverWhatCameBackWhereAndWhatWasGone)
{
    struct Observer final : UndoObserver {
        std::vector<std::string> events;
        void didRestore(const JournalEntry& entry, const FileURL& place) override
        {
            events.push_back(entry.from + " as " + place.path());
        }
        void didFindGone(const JournalEntry& entry) override
        {
            events.push_back("gone " + entry.to);
        }
    };
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
    sweep(disk, {moving("/in/a", "/out"), moving("/in/b", "/out"), moving("/in/c", "/out")});
    disk.remove("/out/a");
    disk.addFile("/in/b", "new");
    Observer observer;

    undo(disk, &observer);

    EXPECT_THAT(observer.events, ElementsAre("/in/c as /in/c", "/in/b as /in/b 2", "gone /out/a"));
}

TEST(Undo, StopsBeforeAnyEntryAtWhichItsObserverWantsItAndGoesOnNextTime)
{
    struct Observer final : UndoObserver {
        int entriesLeft = 0;
        bool shouldStop() override { return entriesLeft-- == 0; }
    };
    for (int entries = 0; entries < 3; ++entries) {
        SCOPED_TRACE(entries);
        InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
        const SweepRecord record = sweep(disk,
            {moving("/in/a", "/out"), planned("/in/b", SweepAction::trash()),
                planned("/in/c", SweepAction::rename("d"))});
        Observer observer;
        observer.entriesLeft = entries;
        try {
            undo(disk, &observer);
            ADD_FAILURE() << "it did not stop";
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.code(), std::errc::operation_canceled);
        }
        EXPECT_EQ(disk.fileExists(FileURL("/in/c")), entries > 0);
        EXPECT_EQ(disk.fileExists(FileURL("/in/b")), entries > 1);
        EXPECT_FALSE(disk.fileExists(FileURL("/in/a")));
        EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});

        EXPECT_EQ(undo(disk), record);
        EXPECT_EQ(disk.content("/in/a"), "A");
        EXPECT_EQ(disk.content("/in/b"), "B");
        EXPECT_EQ(disk.content("/in/c"), "C");
        EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
    }
}

TEST(Undo, IsNotAskedToStopOnceEverythingIsBack)
{
    struct Observer final : UndoObserver {
        bool isDone = false;
        bool shouldStop() override { return isDone; }
        void didRestore(const JournalEntry&, const FileURL&) override { isDone = true; }
    };
    InMemoryFileManager disk{{"/in/a", "A"}};
    sweep(disk, {moving("/in/a", "/out")});
    Observer observer;

    EXPECT_TRUE(undo(disk, &observer));
    EXPECT_THAT(journalOn(disk).load().sweeps, IsEmpty());
}
