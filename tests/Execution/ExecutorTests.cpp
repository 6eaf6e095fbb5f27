#include "Executor.h"

#include "DecodingError.h"
#include "ExecutionFixture.h"
#include "FaultInjectingFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;
using Op = JournalEntry::Op;

namespace {

/// A disk that lists the names in a folder that is held, or fails to.
class ListingDisk final : public FaultInjectingFileManager {
public:
    explicit ListingDisk(FileManager& files, bool isReadable = true)
        : FaultInjectingFileManager(files)
        , m_isReadable(isReadable)
    {
    }

    using FileManager::visitNames;
    bool visitNames(const HeldFolder& folder, const NameVisitor& visit) override
    {
        ++lists;
        if (!m_isReadable)
            throw std::filesystem::filesystem_error("cannot list", folder.url().path(),
                std::make_error_code(std::errc::permission_denied));
        for (const DirectoryEntry& entry : contentsOfDirectory(folder.url()))
            visit(entry.name);
        return true;
    }

    int lists = 0;

private:
    bool m_isReadable;
};

/// Lets a test look at the journal and the disk at the moment at which a file is touched.
class WatchingFileManager final : public FileManager {
public:
    explicit WatchingFileManager(InMemoryFileManager& disk)
        : m_disk(disk)
    {
    }

    /// The journal's last entry as it was on disk when each file was moved or trashed.
    std::vector<JournalEntry> journaledBefore;

    void moveItem(const HeldEntry& from, const HeldEntry& to) override
    {
        noteJournal();
        m_disk.moveItem(from, to);
    }
    std::optional<FileURL> trashItem(const HeldEntry& file) override
    {
        noteJournal();
        return m_disk.trashItem(file);
    }

    bool fileExists(const FileURL& url) override { return m_disk.fileExists(url); }
    bool fileExists(const HeldEntry& entry) override { return m_disk.fileExists(entry); }
    bool directoryExists(const FileURL& url) override { return m_disk.directoryExists(url); }
    FileURL resolvingLinks(const FileURL& url) override { return m_disk.resolvingLinks(url); }
    std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder) override
    {
        return m_disk.contentsOfDirectory(folder);
    }
    void requireListable(const FileURL& folder) override { m_disk.requireListable(folder); }
    FileFacts facts(const FileURL& url) override { return m_disk.facts(url); }
    HeldFolder hold(const FileURL& folder) override { return m_disk.hold(folder); }
    HeldFolder holdBelow(const HeldFolder& above, const FileURL& folder) override
    {
        return m_disk.holdBelow(above, folder);
    }
    HeldFolder createDirectory(const FileURL& folder) override
    {
        return m_disk.createDirectory(folder);
    }
    HeldFolder createDirectoryBelow(const HeldFolder& above, const FileURL& folder) override
    {
        return m_disk.createDirectoryBelow(above, folder);
    }
    void flushDirectory(const FileURL& folder) override { m_disk.flushDirectory(folder); }
    void setCreationDate(const FileURL& url, Date date) override
    {
        m_disk.setCreationDate(url, date);
    }
    std::string readFile(const FileURL& url, std::size_t maxBytes) override
    {
        return m_disk.readFile(url, maxBytes);
    }
    std::string readPrefix(const FileURL& url, std::size_t maxBytes) override
    {
        return m_disk.readPrefix(url, maxBytes);
    }
    void writeAtomically(const FileURL& url, std::span<const std::string_view> pieces) override
    {
        m_disk.writeAtomically(url, pieces);
    }
    std::optional<FileIdentity> identity(const FileURL& url) override
    {
        return m_disk.identity(url);
    }

private:
    void noteJournal()
    {
        const Journal journal = journalOn(m_disk).load();
        journaledBefore.push_back(journal.sweeps.back().entries.back());
    }

    InMemoryFileManager& m_disk;
};

}  // namespace

TEST(Executor, PerformsEveryKindOfActionAndJournalsIt)
{
    struct Row {
        const char* name;
        SweepAction action;
        JournalEntry entry;
    };
    const FileURL out = FileURL::directory("/out");
    for (const Row& row :
        {
            Row{"move", SweepAction::move(out), entry(Op::move, "/in/a.txt", "/out/a.txt")},
            Row{"archive", SweepAction::archive(out),
                entry(Op::archive, "/in/a.txt", "/out/a.txt")},
            Row{"rename", SweepAction::rename("b.txt"),
                entry(Op::rename, "/in/a.txt", "/in/b.txt")},
            Row{"file into", SweepAction::fileInto(out, "b.txt"),
                entry(Op::move, "/in/a.txt", "/out/b.txt")},
            Row{"trash", SweepAction::trash(), entry(Op::trash, "/in/a.txt", "/trash/files/a.txt")},
        }) {
        InMemoryFileManager disk{{"/in/a.txt", "A"}};
        const SweepRecord record = sweep(disk, {planned("/in/a.txt", row.action)});

        EXPECT_THAT(record.entries, ElementsAre(row.entry)) << row.name;
        EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record}) << row.name;
        EXPECT_EQ(disk.content(row.entry.to), "A") << row.name;
        EXPECT_FALSE(disk.fileExists(FileURL("/in/a.txt"))) << row.name;
    }
}

TEST(Executor, SavesTheEntryBeforeItTouchesTheFile)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
    WatchingFileManager watching(disk);
    sweep(watching,
        {moving("/in/a", "/out"), planned("/in/b", SweepAction::trash()),
            planned("/in/c", SweepAction::rename("d"))});

    EXPECT_THAT(watching.journaledBefore,
        ElementsAre(entry(Op::move, "/in/a", "/out/a"), entry(Op::trash, "/in/b", "/in/b"),
            entry(Op::rename, "/in/c", "/in/d")));
}

TEST(Executor, TakesStartAndTimeFromTheCaller)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    const Date start = sweepTime - Seconds(5);

    const SweepRecord record =
        executorOn(disk).apply({{moving("/in/a", "/out")}}, start, sweepTime);

    EXPECT_EQ(record.startedAt, start);
    EXPECT_EQ(record.entries.at(0).at, sweepTime);
}

TEST(Executor, AppendsOneRecordPerSweepWithAFreshId)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    const SweepRecord first = sweep(disk, {moving("/in/a", "/out")});
    const SweepRecord second = sweep(disk, {moving("/in/b", "/out")});

    EXPECT_NE(first.id, second.id);
    EXPECT_THAT(journalOn(disk).load().sweeps, ElementsAre(first, second));
}

TEST(Executor, SkipsAFileThatVanishedWithoutEntryAndWithoutError)
{
    InMemoryFileManager disk{{"/in/b", "B"}};
    const SweepRecord record = sweep(disk, {moving("/in/gone", "/out"), moving("/in/b", "/out")});

    EXPECT_THAT(record.entries, ElementsAre(entry(Op::move, "/in/b", "/out/b")));
}

TEST(Executor, LeavesNoRecordOnDiskWhenNothingWasAttempted)
{
    InMemoryFileManager disk;

    EXPECT_THAT(sweep(disk, {}).entries, IsEmpty());
    EXPECT_THAT(sweep(disk, {moving("/in/gone", "/out")}).entries, IsEmpty());
    EXPECT_TRUE(disk.tree().empty());
}

TEST(Executor, AvoidsTakenNamesByACounterFromTwo)
{
    struct Row {
        const char* name;
        std::vector<const char*> taken;
        const char* source;
        const char* expected;
    };
    for (const Row& row : {
             Row{"two taken", {"a.png", "a 2.png"}, "/in/a.png", "/out/a 3.png"},
             Row{"one taken", {"report.pdf"}, "/in/report.pdf", "/out/report 2.pdf"},
             Row{"two extensions", {"archive.tar.gz"}, "/in/archive.tar.gz",
                 "/out/archive.tar 2.gz"},
             Row{"no extension", {"README"}, "/in/README", "/out/README 2"},
             Row{"the first gap", {"a", "a 3"}, "/in/a", "/out/a 2"},
         }) {
        InMemoryFileManager disk{{row.source, "new"}};
        for (const char* name : row.taken)
            disk.addFile(std::string("/out/") + name, "old");
        const SweepRecord record = sweep(disk, {moving(row.source, "/out")});

        EXPECT_EQ(record.entries.at(0).to, row.expected) << row.name;
        EXPECT_EQ(disk.content(row.expected), "new") << row.name;
        EXPECT_EQ(journalOn(disk).load().sweeps.at(0).entries.at(0).to, row.expected) << row.name;
    }
}

TEST(Executor, AsksTheDiskOnceForEachNumberHoweverManyFilesShareAName)
{
    constexpr int count = 60;
    InMemoryFileManager disk;
    std::vector<PlannedAction> actions;
    for (int file = 0; file < count; ++file) {
        const std::string source = "/in/" + std::to_string(file) + "/a.txt";
        disk.addFile(source, source);
        actions.push_back(moving(source, "/out"));
    }
    FaultInjectingFileManager counting(disk);
    const SweepRecord record = sweep(counting, std::move(actions));

    ASSERT_EQ(record.entries.size(), count);
    EXPECT_EQ(record.entries.back().to, "/out/a 60.txt");
    // Its source, the name that turns out to be taken, and the one that is free.
    EXPECT_LE(counting.callCount(FileCall::fileExists), 3 * count + 1);
}

TEST(Executor, ReadsAllNamesOfAFolderAtOnceWhereHundredsAreTaken)
{
    constexpr int count = 3'000;
    InMemoryFileManager disk{{"/in/a.txt", "new"}, {"/out/a.txt", ""}};
    for (int number = 2; number <= count; ++number)
        disk.addFile("/out/a " + std::to_string(number) + ".txt", "");
    for (const bool isReadable : {true, false}) {
        disk.addFile("/in/a.txt", "new");
        ListingDisk listing(disk, isReadable);
        const SweepRecord record = sweep(listing, {moving("/in/a.txt", "/out")});

        ASSERT_EQ(record.entries.size(), 1U);
        EXPECT_EQ(record.entries[0].to,
            "/out/a " + std::to_string(count + (isReadable ? 1 : 2)) + ".txt");
        EXPECT_EQ(listing.lists, 1);
        EXPECT_EQ(listing.callCount(FileCall::fileExists) < count / 2, isReadable);
    }
}

TEST(Executor, UsesANameAgainThatItHasFreedItselfInAFolderThatWasRead)
{
    constexpr int count = 600;
    InMemoryFileManager disk{{"/one/a.txt", "1"}, {"/two/a.txt", "2"}, {"/out/a.txt", ""}};
    for (int number = 2; number <= count; ++number)
        disk.addFile("/out/a " + std::to_string(number) + ".txt", "");
    ListingDisk listing(disk);
    const SweepRecord record = sweep(listing,
        {moving("/one/a.txt", "/out"), planned("/out/a 550.txt", SweepAction::trash()),
            moving("/two/a.txt", "/out")});

    ASSERT_EQ(record.entries.size(), 3U);
    EXPECT_EQ(listing.lists, 1);
    EXPECT_EQ(record.entries[0].to, "/out/a 601.txt");
    EXPECT_EQ(record.entries[2].to, "/out/a 550.txt");
}

TEST(Executor, UsesANameAgainThatItHasFreedItself)
{
    struct Row {
        const char* name;
        SweepAction frees;
    };
    for (const Row& row : {
             Row{"move", SweepAction::move(FileURL::directory("/elsewhere"))},
             Row{"rename", SweepAction::rename("b.txt")},
             Row{"trash", SweepAction::trash()},
         }) {
        InMemoryFileManager disk{{"/out/a.txt", "A"}, {"/one/a.txt", "1"}, {"/two/a.txt", "2"}};
        const SweepRecord record = sweep(disk,
            {moving("/one/a.txt", "/out"), planned("/out/a.txt", row.frees),
                moving("/two/a.txt", "/out")});

        ASSERT_EQ(record.entries.size(), 3U) << row.name;
        EXPECT_EQ(record.entries[0].to, "/out/a 2.txt") << row.name;
        EXPECT_EQ(record.entries[2].to, "/out/a.txt") << row.name;
    }
}

TEST(Executor, UsesANameAgainThatAFileHadWhileAnotherWasLookedForIt)
{
    InMemoryFileManager disk{{"/in/a.txt", "1"}, {"/in/a 2.txt", "2"}};
    const SweepRecord record = sweep(disk,
        {planned("/in/a 2.txt", SweepAction::rename("a.txt")),
            planned("/in/a.txt", SweepAction::rename("a.txt"))});

    EXPECT_THAT(record.entries,
        ElementsAre(entry(Op::rename, "/in/a 2.txt", "/in/a 3.txt"),
            entry(Op::rename, "/in/a.txt", "/in/a 2.txt")));
}

TEST(Executor, CountsAFolderOrADanglingLinkAsTaken)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    disk.addFolder("/out/a");
    disk.addLink("/out/b", "/nowhere");

    const SweepRecord record = sweep(disk, {moving("/in/a", "/out"), moving("/in/b", "/out")});

    EXPECT_EQ(record.entries.at(0).to, "/out/a 2");
    EXPECT_EQ(record.entries.at(1).to, "/out/b 2");
}

TEST(Executor, GivesAFileRenamedToItsOwnNameTheCounter)
{
    InMemoryFileManager disk{{"/in/report.pdf", "R"}};

    EXPECT_EQ(sweep(disk, {planned("/in/report.pdf", SweepAction::rename("report.pdf"))})
                  .entries.at(0)
                  .to,
        "/in/report 2.pdf");
}

TEST(Executor, MakesTheDestinationFolderWithAllItsParents)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    sweep(disk, {moving("/in/a", "/one/two/three")});

    EXPECT_EQ(disk.content("/one/two/three/a"), "A");
}

TEST(Executor, StampsTheCreationDateOfFiledNotesOnly)
{
    const Date stamp = sweepTime - Seconds(1000);
    InMemoryFileManager disk{{"/in/a.md", "A"}, {"/in/b.md", "B"}};
    PlannedAction filed =
        planned("/in/a.md", SweepAction::fileInto(FileURL::directory("/out"), "x.md"));
    PlannedAction moved = moving("/in/b.md", "/out");
    filed.stampCreated = moved.stampCreated = stamp;
    sweep(disk, {filed, moved});

    EXPECT_EQ(disk.facts(FileURL("/out/x.md")).created, stamp);
    EXPECT_NE(disk.facts(FileURL("/out/b.md")).created, stamp);
}

TEST(Executor, IgnoresThatACreationDateCannotBeSet)
{
    InMemoryFileManager disk{{"/in/a.md", "A"}};
    disk.refuseCreationDates();
    PlannedAction filed =
        planned("/in/a.md", SweepAction::fileInto(FileURL::directory("/out"), "x.md"));
    filed.stampCreated = sweepTime;

    EXPECT_EQ(sweep(disk, {filed}).entries.size(), 1U);
    EXPECT_EQ(disk.content("/out/x.md"), "A");
}

TEST(Executor, KeepsTheOldPathForATrashThatDoesNotTellThePlace)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    disk.hideTrashLocation();

    EXPECT_THAT(sweep(disk, {planned("/in/a", SweepAction::trash())}).entries,
        ElementsAre(entry(Op::trash, "/in/a", "/in/a")));
}

TEST(Executor, WithdrawsTheEntryOfAnActionThatFailsAndGoesOn)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::moveItem, FileURL("/in/b"), std::errc::permission_denied)};
    const SweepRecord record =
        sweep(files, {moving("/in/a", "/out"), moving("/in/b", "/out"), moving("/in/c", "/out")});

    EXPECT_THAT(record.entries,
        ElementsAre(entry(Op::move, "/in/a", "/out/a"), entry(Op::move, "/in/c", "/out/c")));
    EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});
    EXPECT_EQ(disk.content("/in/b"), "B");
}

TEST(Executor, LeavesAnEmptyRecordOnDiskWhenEveryActionFailed)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::moveItem, std::errc::permission_denied)};
    const SweepRecord record = sweep(files, {moving("/in/a", "/out")});

    EXPECT_THAT(record.entries, IsEmpty());
    EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});
}

TEST(Executor, FailsAnActionWhoseFolderCannotBeMade)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/blocked", "a file"}};
    const SweepRecord record =
        sweep(disk, {moving("/in/a", "/blocked/sub"), moving("/in/b", "/out")});

    EXPECT_THAT(record.entries, ElementsAre(entry(Op::move, "/in/b", "/out/b")));
    EXPECT_EQ(disk.content("/in/a"), "A");
}

TEST(Executor, FailsAnActionWhoseNewNameIsNoFileName)
{
    for (const std::string& name : {std::string(), std::string("."), std::string(".."),
             std::string("a/b"), std::string("../b"), std::string("a\0b", 3)}) {
        InMemoryFileManager disk{{"/in/a", "A"}};
        EXPECT_THAT(sweep(disk, {planned("/in/a", SweepAction::rename(name))}).entries, IsEmpty());
        EXPECT_EQ(disk.content("/in/a"), "A") << name;
    }
}

TEST(Executor, LeavesNoRecordForAFileThatItCannotEvenLookUp)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::fileExists, FileURL("/in/a"), std::errc::io_error)};

    EXPECT_THAT(sweep(files, {moving("/in/a", "/out")}).entries, IsEmpty());
    EXPECT_FALSE(disk.fileExists(journalURL));
    EXPECT_EQ(disk.content("/in/a"), "A");
}

TEST(Executor, TouchesNoFileWhenTheJournalCannotBeSaved)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)};
    const SweepRecord record =
        sweep(files, {moving("/in/a", "/out"), planned("/in/b", SweepAction::trash())});

    EXPECT_THAT(record.entries, IsEmpty());
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(disk.content("/in/b"), "B");
}

TEST(Executor, TouchesNothingWhenTheJournalCannotBeLoaded)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {journalURL.path(), "{torn"}};

    EXPECT_THROW(sweep(disk, {moving("/in/a", "/out")}), DecodingError);
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(disk.content(journalURL.path()), "{torn");
}

TEST(Executor, WithdrawsATrashEntryWhosePlaceCannotBeSaved)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    FaultInjectingFileManager files{
        disk, failAt(FileCall::writeAtomically, 1, std::errc::no_space_on_device)};
    const SweepRecord record = sweep(files, {planned("/in/a", SweepAction::trash())});

    EXPECT_THAT(record.entries, IsEmpty());
    EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});
    EXPECT_EQ(disk.content("/trash/files/a"), "A");
}

TEST(Executor, TellsItsObserverWhatHappened)
{
    struct Observer final : SweepObserver {
        std::vector<std::string> events;
        void willPerform(std::size_t index, std::size_t count) override
        {
            events.push_back(std::to_string(index + 1) + " of " + std::to_string(count));
        }
        void didPerform(const JournalEntry& done) override { events.push_back("did " + done.to); }
        void didFail(const PlannedAction& action, const std::exception&) override
        {
            events.push_back("failed " + action.source.path());
        }
    };
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    disk.addFile("/blocked", "");
    Observer observer;
    executorOn(disk).apply(
        {{moving("/in/a", "/out"), moving("/in/b", "/blocked"), moving("/in/gone", "/out")}},
        sweepTime, sweepTime, &observer);

    EXPECT_THAT(
        observer.events, ElementsAre("1 of 3", "did /out/a", "2 of 3", "failed /in/b", "3 of 3"));
}

TEST(Executor, EndsBeforeAnyActionAtWhichItsObserverWantsIt)
{
    struct Observer final : SweepObserver {
        int actionsLeft = 0;
        int begun = 0;
        bool shouldStop() override { return actionsLeft-- == 0; }
        void willPerform(std::size_t /*index*/, std::size_t /*count*/) override { ++begun; }
    };
    const SweepPlan plan{{moving("/in/a", "/out"), planned("/in/b", SweepAction::trash()),
        planned("/in/c", SweepAction::rename("d"))}};
    for (int actions = 0; actions <= 3; ++actions) {
        SCOPED_TRACE(actions);
        InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
        Observer observer;
        observer.actionsLeft = actions;

        const SweepRecord record = executorOn(disk).apply(plan, sweepTime, sweepTime, &observer);

        EXPECT_EQ(observer.begun, actions);
        EXPECT_EQ(record.entries.size(), static_cast<std::size_t>(actions));
        for (int index = 0; index < 3; ++index) {
            const FileURL& source = plan.actions[static_cast<std::size_t>(index)].source;
            EXPECT_EQ(disk.fileExists(source), index >= actions) << source.path();
        }
        EXPECT_EQ(disk.fileExists(journalURL), actions > 0);
        const std::vector<SweepRecord> sweeps = journalOn(disk).load().sweeps;
        EXPECT_EQ(sweeps, actions > 0 ? std::vector{record} : std::vector<SweepRecord>());
        executorOn(disk).undoLastSweep(sweepTime);
        EXPECT_EQ(disk.content("/in/a"), "A");
        EXPECT_EQ(disk.content("/in/b"), "B");
        EXPECT_EQ(disk.content("/in/c"), "C");
    }
}

TEST(Executor, LeavesAWholeJournalWhenItEndsAfterAnActionThatFailed)
{
    struct Observer final : SweepObserver {
        bool hasFailed = false;
        bool shouldStop() override { return hasFailed; }
        void didFail(const PlannedAction&, const std::exception&) override { hasFailed = true; }
    };
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/in/c", "C"}};
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::moveItem, FileURL("/in/b"), std::errc::permission_denied)};
    Observer observer;

    const SweepRecord record = executorOn(files).apply(
        {{moving("/in/a", "/out"), moving("/in/b", "/out"), moving("/in/c", "/out")}}, sweepTime,
        sweepTime, &observer);

    EXPECT_THAT(record.entries, ElementsAre(entry(Op::move, "/in/a", "/out/a")));
    EXPECT_EQ(journalOn(disk).load().sweeps, std::vector{record});
    EXPECT_EQ(disk.content("/in/b"), "B");
    EXPECT_EQ(disk.content("/in/c"), "C");
}
