#include "ExecutionFixture.h"
#include "FaultInjectingFileManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

// Another program puts something in the place of a folder while a sweep or an undo uses it.

using namespace tidemark;

namespace {

/// Lets another program act once, before the journal is written or before a file is moved.
class DisturbedFileManager final : public FaultInjectingFileManager {
public:
    DisturbedFileManager(InMemoryFileManager& disk, FileCall before, std::function<void()> deed)
        : FaultInjectingFileManager(disk)
        , m_before(before)
        , m_deed(std::move(deed))
    {
    }

    void writeAtomically(const FileURL& url, std::span<const std::string_view> pieces) override
    {
        act(FileCall::writeAtomically);
        FaultInjectingFileManager::writeAtomically(url, pieces);
    }

    using FaultInjectingFileManager::moveItem;
    void moveItem(const HeldEntry& from, const HeldEntry& to) override
    {
        act(FileCall::moveItem);
        FaultInjectingFileManager::moveItem(from, to);
    }

private:
    void act(FileCall call)
    {
        if (call == m_before && m_deed)
            std::exchange(m_deed, nullptr)();
    }

    FileCall m_before;
    std::function<void()> m_deed;
};

struct Failures final : SweepObserver {
    void didFail(const PlannedAction&, const std::exception& error) override
    {
        texts.emplace_back(error.what());
    }

    std::vector<std::string> texts;
};

/// A folder goes away, and a link that leads elsewhere comes into its place.
void putLink(InMemoryFileManager& disk, const std::string& folder)
{
    disk.relocate(folder, "/away");
    disk.addLink(folder, "/outside");
}

struct Kind {
    const char* name;
    PlannedAction action;
    std::string swapped;
};

std::vector<Kind> everyKind()
{
    const FileURL filed = FileURL::directory("/filed");
    return {
        {"a move's destination", moving("/in/a", "/filed"), "/filed"},
        {"a move's source", moving("/in/a", "/filed"), "/in"},
        {"an archive", planned("/in/a", SweepAction::archive(filed)), "/filed"},
        {"an archive's source", planned("/in/a", SweepAction::archive(filed)), "/in"},
        {"a renamed file's folder", planned("/in/a", SweepAction::rename("b")), "/in"},
        {"a filed file's destination", planned("/in/a", SweepAction::fileInto(filed, "b")),
            "/filed"},
        {"a filed file's source", planned("/in/a", SweepAction::fileInto(filed, "b")), "/in"},
        {"a trashed file's folder", planned("/in/a", SweepAction::trash()), "/in"},
    };
}

void fill(InMemoryFileManager& disk)
{
    disk.addFile("/in/a", "A");
    disk.addFile("/in/z", "Z");
    disk.addFolder("/filed");
    disk.addFile("/outside/a", "secret a");
    disk.addFile("/outside/z", "secret z");
}

void expectNothingOutside(const InMemoryFileManager& disk)
{
    EXPECT_EQ(disk.content("/outside/a"), "secret a");
    EXPECT_EQ(disk.content("/outside/z"), "secret z");
    for (const std::string& path : disk.tree())
        EXPECT_TRUE(!path.starts_with("/outside/") || path == "/outside/" || path == "/outside/a"
            || path == "/outside/z")
            << path;
}

}  // namespace

TEST(SwappedFolder, FailsTheActionByNameAndIsWithdrawn)
{
    for (const Kind& kind : everyKind()) {
        SCOPED_TRACE(kind.name);
        InMemoryFileManager disk;
        fill(disk);
        DisturbedFileManager files{
            disk, FileCall::writeAtomically, [&] { putLink(disk, kind.swapped); }};
        Failures failures;

        const SweepRecord record =
            executorOn(files).apply({{kind.action}}, sweepTime, sweepTime, &failures);

        EXPECT_TRUE(record.entries.empty());
        EXPECT_TRUE(journalOn(disk).load().sweeps.back().entries.empty());
        ASSERT_EQ(failures.texts.size(), 1U);
        EXPECT_NE(failures.texts[0].find('[' + kind.swapped + ']'), std::string::npos)
            << failures.texts[0];
        EXPECT_EQ(disk.content(kind.swapped == "/in" ? "/away/a" : "/in/a"), "A");
        expectNothingOutside(disk);
    }
}

TEST(SwappedFolder, IsNotUsedByLaterActionsEither)
{
    for (const std::string swapped : {"/in", "/filed"}) {
        SCOPED_TRACE(swapped);
        InMemoryFileManager disk;
        fill(disk);
        disk.addFile("/other/b", "B");
        DisturbedFileManager files{
            disk, FileCall::writeAtomically, [&] { putLink(disk, swapped); }};

        const SweepRecord record = sweep(files,
            {moving("/in/a", "/filed"), moving("/in/z", "/filed"), moving("/other/b", "/sorted")});

        ASSERT_EQ(record.entries.size(), 1U);
        EXPECT_EQ(record.entries[0].to, "/sorted/b");
        EXPECT_EQ(disk.content("/sorted/b"), "B");
        EXPECT_EQ(disk.content(swapped == "/in" ? "/away/z" : "/in/z"), "Z");
        expectNothingOutside(disk);
    }
}

TEST(SwappedFolder, IsNotUsedOnTheWayToAnotherOne)
{
    InMemoryFileManager disk;
    fill(disk);
    disk.addFile("/filed/c", "C");
    DisturbedFileManager files{disk, FileCall::writeAtomically, [&] { putLink(disk, "/in"); }};

    const SweepRecord record =
        sweep(files, {moving("/in/a", "/filed"), moving("/filed/c", "/in/notes/month")});

    EXPECT_TRUE(record.entries.empty());
    EXPECT_EQ(disk.content("/filed/c"), "C");
    expectNothingOutside(disk);
}

TEST(SwappedFolder, IsUsedByTheNextSweepAsTheUsersOwnLink)
{
    InMemoryFileManager disk;
    fill(disk);
    DisturbedFileManager files{disk, FileCall::writeAtomically, [&] { putLink(disk, "/filed"); }};
    sweep(files, {moving("/in/a", "/filed")});

    const SweepRecord record = sweep(files, {moving("/in/a", "/filed")});

    ASSERT_EQ(record.entries.size(), 1U);
    EXPECT_EQ(disk.content("/outside/a 2"), "A");
}

TEST(SwappedFolder, StopsAnUndoThatALaterOneFinishes)
{
    for (const std::string swapped : {"/in", "/filed"}) {
        SCOPED_TRACE(swapped);
        InMemoryFileManager disk;
        fill(disk);
        sweep(disk, {moving("/in/a", "/filed"), moving("/in/z", "/filed")});
        DisturbedFileManager files{disk, FileCall::moveItem, [&] { putLink(disk, swapped); }};

        try {
            executorOn(files).undoLastSweep(sweepTime);
            ADD_FAILURE() << "the undo does not know";
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.path1(), swapped);
        }

        expectNothingOutside(disk);
        EXPECT_EQ(journalOn(disk).load().sweeps.size(), 1U);
        disk.remove(swapped);
        disk.relocate("/away", swapped);
        executorOn(files).undoLastSweep(sweepTime);
        EXPECT_EQ(disk.content("/in/a"), "A");
        EXPECT_EQ(disk.content("/in/z"), "Z");
    }
}

TEST(SwappedFolder, DoesNotHaveAnUndoTakeItsFilesForGone)
{
    /// Acts when the first file is back.
    struct OtherProgram final : UndoObserver {
        explicit OtherProgram(InMemoryFileManager& files)
            : disk(files)
        {
        }
        void didRestore(const JournalEntry&, const FileURL&) override
        {
            disk.relocate("/filed", "/away");
            disk.addFolder("/filed");
        }

        InMemoryFileManager& disk;
    };
    InMemoryFileManager disk;
    fill(disk);
    sweep(disk, {moving("/in/a", "/filed"), moving("/in/z", "/filed")});
    OtherProgram other{disk};

    EXPECT_THROW(
        executorOn(disk).undoLastSweep(sweepTime, &other), std::filesystem::filesystem_error);

    EXPECT_EQ(journalOn(disk).load().sweeps.size(), 1U);
    EXPECT_EQ(disk.content("/in/z"), "Z");
    EXPECT_EQ(disk.content("/away/a"), "A");
}

TEST(SwappedFolder, DoesNotHaveAnUndoTakeWhatIsInItsSubfoldersForGone)
{
    /// Acts when the first file is back.
    struct OtherProgram final : UndoObserver {
        explicit OtherProgram(InMemoryFileManager& files)
            : disk(files)
        {
        }
        void didRestore(const JournalEntry&, const FileURL&) override
        {
            disk.relocate("/filed", "/away");
        }

        InMemoryFileManager& disk;
    };
    InMemoryFileManager disk;
    fill(disk);
    sweep(disk, {moving("/in/a", "/filed/month"), moving("/in/z", "/filed")});
    OtherProgram other{disk};

    EXPECT_THROW(
        executorOn(disk).undoLastSweep(sweepTime, &other), std::filesystem::filesystem_error);

    EXPECT_EQ(journalOn(disk).load().sweeps.size(), 1U);
    disk.relocate("/away", "/filed");
    executorOn(disk).undoLastSweep(sweepTime);
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_EQ(disk.content("/in/z"), "Z");
}

TEST(SwappedFolder, ManyFoldersAreSweptAlthoughOnlySomeAreHeld)
{
    InMemoryFileManager disk;
    std::vector<PlannedAction> actions;
    for (int number = 0; number < 200; ++number) {
        const std::string source = "/in " + std::to_string(number) + "/file";
        disk.addFile(source, std::to_string(number));
        actions.push_back(moving(source, "/out " + std::to_string(number % 150)));
    }

    EXPECT_EQ(sweep(disk, actions).entries.size(), 200U);
    EXPECT_EQ(disk.content("/out 49/file 2"), "199");

    executorOn(disk).undoLastSweep(sweepTime);
    EXPECT_EQ(disk.content("/in 199/file"), "199");
}
