#include "Rehearsal.h"

#include "ExecutionFixture.h"
#include "FaultInjectingFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;

namespace {

SweepAction fileInto(const std::string& folder, std::string name)
{
    return SweepAction::fileInto(FileURL::directory(folder), std::move(name));
}

/// Source and destination of every action that is expected to work; trashed files have none.
using Moves = std::vector<std::pair<std::string, std::optional<std::string>>>;

Moves rehearsed(FileManager& disk, std::vector<PlannedAction> actions)
{
    Moves moves;
    const Rehearsal rehearsal({std::move(actions)}, disk);
    for (std::size_t index = 0; index < rehearsal.size(); ++index) {
        const RehearsedAction action = rehearsal[index];
        if (action.obstacle)
            continue;
        moves.emplace_back(action.planned.source.path(),
            action.destination ? std::optional(action.destination->path()) : std::nullopt);
    }
    return moves;
}

Moves performed(FileManager& disk, std::vector<PlannedAction> actions)
{
    Moves moves;
    for (const JournalEntry& entry : sweep(disk, std::move(actions)).entries) {
        const bool isTrash = entry.op == JournalEntry::Op::trash;
        moves.emplace_back(entry.from, isTrash ? std::nullopt : std::optional(entry.to));
    }
    return moves;
}

struct Row {
    const char* name;
    std::vector<std::string> files;
    std::vector<PlannedAction> actions;
};

std::vector<Row> rows()
{
    return {
        {"a free name", {"/in/a"}, {moving("/in/a", "/out")}},
        {"a taken name", {"/in/a", "/out/a"}, {moving("/in/a", "/out")}},
        {"one name from two folders", {"/in/a", "/in2/a"},
            {moving("/in/a", "/out"), moving("/in2/a", "/out")}},
        {"one name from two folders, taken already", {"/in/a", "/in2/a", "/out/a", "/out/a 2"},
            {moving("/in/a", "/out"), moving("/in2/a", "/out")}},
        {"two files that get one name", {"/in/x", "/in/y"},
            {planned("/in/x", fileInto("/out", "n")), planned("/in/y", fileInto("/out", "n"))}},
        {"a name that an earlier action frees", {"/in/a", "/in/b"},
            {moving("/in/a", "/out"), planned("/in/b", SweepAction::rename("a"))}},
        {"a name that an earlier action takes", {"/in/a", "/in/b"},
            {planned("/in/a", SweepAction::rename("c")),
                planned("/in/b", SweepAction::rename("c"))}},
        {"a name that trashing frees", {"/in/a", "/in/b"},
            {planned("/in/a", SweepAction::trash()), planned("/in/b", SweepAction::rename("a"))}},
        {"a file renamed to its own name", {"/in/a.txt"},
            {planned("/in/a.txt", SweepAction::rename("a.txt"))}},
        {"one file planned twice", {"/in/a"}, {moving("/in/a", "/out"), moving("/in/a", "/out2")}},
        {"a place planned twice, to which another file has come", {"/in/a", "/in/b"},
            {moving("/in/a", "/out"), planned("/in/b", SweepAction::rename("a")),
                moving("/in/a", "/out2")}},
        {"a place planned twice, which is left twice", {"/in/a", "/in/b", "/in/c"},
            {moving("/in/a", "/out"), planned("/in/b", SweepAction::rename("a")),
                moving("/in/a", "/out"), planned("/in/c", SweepAction::rename("a"))}},
        {"a chain of names, each freed by the one before", {"/in/a", "/in/b", "/in/c"},
            {moving("/in/a", "/out"), planned("/in/b", SweepAction::rename("a")),
                planned("/in/c", SweepAction::rename("b"))}},
        {"a freed name that is taken again", {"/in/a", "/in/b", "/in/c"},
            {moving("/in/a", "/out"), planned("/in/b", SweepAction::rename("a")),
                planned("/in/c", SweepAction::rename("a"))}},
        {"a name that a failing action does not free", {"/in/a", "/in/b", "/file"},
            {moving("/in/a", "/file/sub"), planned("/in/b", SweepAction::rename("a"))}},
        {"into the root", {"/in/a", "/a"}, {moving("/in/a", "/")}},
        {"into the folder in which it lies", {"/in/a"}, {moving("/in/a", "/in")}},
        {"an existing folder's name", {"/in/a", "/out/a/x"}, {moving("/in/a", "/out")}},
        {"a file takes the name of a folder to be made", {"/in/a", "/in/b"},
            {planned("/in/a", fileInto("/x", "sub")), moving("/in/b", "/x/sub")}},
        {"a new folder takes the name of a file", {"/in/a", "/in/b"},
            {moving("/in/a", "/x/sub"), planned("/in/b", fileInto("/x", "sub"))}},
        {"a folder where a file made room", {"/in/a", "/in/b"},
            {moving("/in/a", "/out"), moving("/in/b", "/in/a")}},
        {"a folder below a file", {"/in/a", "/in/b", "/file"},
            {moving("/in/a", "/file/sub"), moving("/in/b", "/out")}},
        {"one folder under two spellings", {"/in/a", "/in2/a", "/out/x"},
            {moving("/in/a", "/out"), moving("/in2/a", "/in/../out")}},
        {"one folder by its name and by a link", {"/in/a", "/in2/a", "/real/x"},
            {moving("/in/a", "/real"), moving("/in2/a", "/link")}},
        {"one file under two spellings", {"/in/a"},
            {moving("/in/a", "/out"), moving("/in/../in/a", "/out")}},
        {"a new folder below a link", {"/in/a", "/in2/a", "/real/x"},
            {moving("/in/a", "/real/new"), moving("/in2/a", "/link/new")}},
        {"a name that is too long", {"/in/a", "/in/b"},
            {planned("/in/a", SweepAction::rename(std::string(256, 'x'))),
                moving("/in/b", "/out")}},
        {"a name that the number makes too long",
            {"/in/a", "/in/b", "/in/" + std::string(254, 'x')},
            {planned("/in/a", SweepAction::rename(std::string(254, 'x'))),
                moving("/in/b", "/out")}},
        {"a name that is none", {"/in/a", "/in/b"},
            {planned("/in/a", SweepAction::rename("x/y")), moving("/in/b", "/out")}},
    };
}

void fill(InMemoryFileManager& disk, const Row& row)
{
    disk.addLink("/link", "/real");
    for (const std::string& file : row.files)
        disk.addFile(file, file);
}

}  // namespace

TEST(Rehearsal, ForetellsWhatTheSweepThenDoes)
{
    for (const Row& row : rows()) {
        InMemoryFileManager disk;
        fill(disk, row);
        const Moves foretold = rehearsed(disk, row.actions);

        EXPECT_EQ(foretold, performed(disk, row.actions)) << row.name;
    }
}

TEST(Rehearsal, ChangesNothing)
{
    for (const Row& row : rows()) {
        InMemoryFileManager disk;
        fill(disk, row);
        const std::vector<std::string> before = disk.tree();
        const Rehearsal rehearsal({row.actions}, disk);

        EXPECT_EQ(disk.tree(), before) << row.name;
    }
}

TEST(Rehearsal, TellsWhatStandsInTheWay)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/file", ""}};
    const Rehearsal rehearsal({{moving("/in/a", "/file/sub")}}, disk);

    ASSERT_EQ(rehearsal.size(), 1U);
    EXPECT_EQ(rehearsal[0].destination, std::nullopt);
    ASSERT_TRUE(rehearsal[0].obstacle);
    try {
        std::rethrow_exception(rehearsal[0].obstacle);
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::not_a_directory);
    }
}

TEST(Rehearsal, EndsWhereTheObserverWantsIt)
{
    struct Observer final : SweepObserver {
        int actionsLeft = 1;
        bool shouldStop() override { return actionsLeft-- == 0; }
    };
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}};
    Observer observer;
    const Rehearsal rehearsal(
        {{moving("/in/a", "/out"), moving("/in/b", "/out")}}, disk, &observer);

    ASSERT_EQ(rehearsal.size(), 1U);
    EXPECT_EQ(rehearsal[0].destination, FileURL("/out/a"));
}

namespace {

/// A disk that may list the names in a folder in place of looking each of them up.
class ListingDisk final : public FaultInjectingFileManager {
public:
    ListingDisk(FileManager& files, bool isExact)
        : FaultInjectingFileManager(files)
        , m_isExact(isExact)
    {
    }

    using FileManager::visitNames;
    bool visitNames(const FileURL& folder, const NameVisitor& visit) override
    {
        ++lists;
        for (const DirectoryEntry& entry : contentsOfDirectory(folder))
            visit(entry.name);
        return m_isExact;
    }

    int lists = 0;

private:
    bool m_isExact;
};

}  // namespace

TEST(Rehearsal, ListsAFolderInPlaceOfVeryManyLookUps)
{
    constexpr int files = 2'000;
    InMemoryFileManager disk;
    std::vector<PlannedAction> actions;
    for (int index = 0; index < files; ++index) {
        const std::string name = "n" + std::to_string(index);
        disk.addFile("/in/" + name, name);
        if (index % 3 == 0)
            disk.addFile("/out/" + name, "");
        actions.push_back(moving("/in/" + name, "/out"));
        // Here the names that other files leave are wanted.
        if (index % 5 == 4)
            actions.back() =
                planned("/in/" + name, SweepAction::rename("n" + std::to_string(index / 2)));
    }
    ListingDisk exact(disk, true);
    ListingDisk inexact(disk, false);
    ListingDisk unreadable(disk, true);
    unreadable.setFaults({failEvery(FileCall::contentsOfDirectory, std::errc::permission_denied)});
    const Moves byLists = rehearsed(exact, actions);

    EXPECT_GT(exact.lists, 0);
    EXPECT_LT(exact.callCount(FileCall::fileExists), files);
    EXPECT_EQ(byLists, rehearsed(inexact, actions));
    EXPECT_EQ(byLists, rehearsed(unreadable, actions));
    EXPECT_EQ(inexact.lists, unreadable.lists);
    EXPECT_EQ(byLists, performed(disk, actions));
}

TEST(Rehearsal, CountsTheActionsThatWouldFail)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/in/b", "B"}, {"/out/b", ""}, {"/file", ""}};
    const Rehearsal rehearsal({{moving("/in/a", "/file/sub"), moving("/in/b", "/out")}}, disk);

    ASSERT_EQ(rehearsal.size(), 2U);
    EXPECT_EQ(rehearsal.obstacles(), 1U);
    EXPECT_EQ(rehearsal.planned(1).source, FileURL("/in/b"));
    EXPECT_EQ(rehearsal[1].destination, FileURL("/out/b 2"));
}
