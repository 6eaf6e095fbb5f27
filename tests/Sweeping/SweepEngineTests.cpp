#include "SweepEngine.h"

#include "DefaultRules.h"
#include "InMemoryFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const Date now{Seconds(1714745100)};
const FileURL journalURL{"/support/journal.json"};

Rule movingTo(const std::string& folder)
{
    return {.name = "move to " + folder,
        .match = {},
        .action = RuleAction::fixed(SweepAction::move(FileURL::directory(folder)))};
}

WatchedFolder watched(std::string path, std::vector<Rule> rules)
{
    return {.path = std::move(path), .rules = std::move(rules), .sortsMarkdown = false};
}

SweepEngine engineOn(FileManager& disk)
{
    return {Executor(JournalStore(journalURL, disk), disk), disk};
}

std::vector<std::string> destinations(const SweepRecord& record)
{
    std::vector<std::string> paths;
    for (const JournalEntry& entry : record.entries)
        paths.push_back(entry.to);
    return paths;
}

}  // namespace

class SweepEngineTest : public testing::Test {
protected:
    /// A file that was modified `age` seconds ago.
    void addFile(const std::string& path, double age = 3600)
    {
        m_disk.addFile(path, path);
        m_disk.setAllDates(path, now - Seconds(age));
    }

    SweepRecord sweep(const std::vector<WatchedFolder>& folders, Date startedAt = now)
    {
        return engineOn(m_disk).sweep(folders, Seconds(60), startedAt, now);
    }

    InMemoryFileManager m_disk;
};

TEST_F(SweepEngineTest, ReturnsAFreshEmptyRecordAndWritesNoJournalWithoutFolders)
{
    const SweepRecord first = sweep({}, now - Seconds(9));
    const SweepRecord second = sweep({});

    EXPECT_EQ(first.startedAt, now - Seconds(9));
    EXPECT_THAT(first.entries, IsEmpty());
    EXPECT_NE(first.id, second.id);
    EXPECT_FALSE(m_disk.fileExists(journalURL));
}

TEST_F(SweepEngineTest, TouchesNoJournalWhenNothingIsToBeDone)
{
    addFile("/in/a", 3600);
    m_disk.addFile(journalURL.path(), "not even a journal");

    EXPECT_THAT(sweep({watched("/in", {})}).entries, IsEmpty());
    EXPECT_EQ(m_disk.content(journalURL.path()), "not even a journal");
}

TEST_F(SweepEngineTest, LeavesFilesAloneDuringTheGracePeriod)
{
    addFile("/in/young", 59);
    EXPECT_THAT(sweep({watched("/in", {movingTo("/out")})}).entries, IsEmpty());

    addFile("/in/exact", 60);
    EXPECT_THAT(
        destinations(sweep({watched("/in", {movingTo("/out")})})), ElementsAre("/out/exact"));
    EXPECT_TRUE(m_disk.fileExists(FileURL("/in/young")));
}

TEST_F(SweepEngineTest, NeverPlansAnUnfinishedDownload)
{
    addFile("/in/Setup.DMG.CRDOWNLOAD", 1e9);

    EXPECT_THAT(sweep({watched("/in", {movingTo("/out")})}).entries, IsEmpty());
}

TEST_F(SweepEngineTest, JoinsTheFoldersInTheirOrderIntoOneRecord)
{
    addFile("/one/a");
    addFile("/one/b");
    addFile("/two/a");

    const SweepRecord record =
        sweep({watched("/two", {movingTo("/out")}), watched("/one", {movingTo("/out")})});

    EXPECT_THAT(destinations(record), ElementsAre("/out/a", "/out/a 2", "/out/b"));
}

TEST_F(SweepEngineTest, TestsAFileOnlyAgainstTheRulesOfItsFolder)
{
    addFile("/one/a");
    addFile("/two/b");

    EXPECT_THAT(destinations(sweep({watched("/one", {}), watched("/two", {movingTo("/out")})})),
        ElementsAre("/out/b"));
}

TEST_F(SweepEngineTest, PlansAllFoldersBeforeAnythingIsMoved)
{
    addFile("/one/a");
    m_disk.addFolder("/two");

    // Were the second folder scanned after the first one's moves, the file would travel on.
    const SweepRecord record =
        sweep({watched("/one", {movingTo("/two")}), watched("/two", {movingTo("/out")})});

    EXPECT_THAT(destinations(record), ElementsAre("/two/a"));
}

TEST_F(SweepEngineTest, MovesNothingWhenAnyFolderCannotBeScanned)
{
    addFile("/one/a");

    EXPECT_THROW(sweep({watched("/one", {movingTo("/out")}), watched("/absent", {})}),
        std::filesystem::filesystem_error);
    EXPECT_TRUE(m_disk.fileExists(FileURL("/one/a")));
    EXPECT_FALSE(m_disk.fileExists(journalURL));
}

TEST_F(SweepEngineTest, TakesAgesFromNowAndTheRecordsStartFromItsStart)
{
    addFile("/in/a", 60);
    const Date start = now - Seconds(50);
    Rule rule = movingTo("/out");
    rule.match.minAge = Seconds(60);

    const SweepRecord record = sweep({watched("/in", {rule})}, start);

    EXPECT_EQ(record.startedAt, start);
    ASSERT_EQ(record.entries.size(), 1U);
    EXPECT_EQ(record.entries[0].at, now);
}

TEST_F(SweepEngineTest, OffersTheStepForOneFolder)
{
    const auto file = [](const char* path, double age) {
        const Date date = now - Seconds(age);
        return FileInfo{.url = FileURL(path),
            .modified = date,
            .added = date,
            .lastOpened = date,
            .created = date,
            .frontMatter = std::nullopt,
            .isScreenCapture = false};
    };
    const SweepPlan plan =
        SweepEngine::plan({file("/in/b", 60), file("/in/a", 60), file("/in/c", 5)},
            {movingTo("/out")}, Seconds(60), now);

    ASSERT_EQ(plan.actions.size(), 2U);
    EXPECT_EQ(plan.actions[0].source, FileURL("/in/b"));
    EXPECT_EQ(plan.actions[1].source, FileURL("/in/a"));
}

TEST_F(SweepEngineTest, RehearsesThePlacesThatTheSweepThenUses)
{
    addFile("/one/a");
    addFile("/two/a");
    addFile("/out/a");
    const std::vector<WatchedFolder> folders{
        watched("/one", {movingTo("/out")}), watched("/two", {movingTo("/out")})};

    std::vector<std::string> foretold;
    const Rehearsal rehearsal = engineOn(m_disk).rehearse(folders, Seconds(60), now);
    for (std::size_t index = 0; index < rehearsal.size(); ++index)
        foretold.push_back(rehearsal[index].destination.value().path());

    EXPECT_THAT(foretold, ElementsAre("/out/a 2", "/out/a 3"));
    EXPECT_EQ(destinations(sweep(folders)), foretold);
}
