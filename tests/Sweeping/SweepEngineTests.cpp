#include "SweepEngine.h"

#include "Clock.h"
#include "DefaultRules.h"
#include "InMemoryFileManager.h"
#include "LinuxFileManager.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using namespace tidemark;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

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

    /// In how many seconds the observer of a sweep was told that a file comes of age.
    std::vector<double> comingOfAgeAfter(const std::vector<WatchedFolder>& folders)
    {
        struct Observer final : SweepObserver {
            std::vector<double> seconds;
            bool hasBegun = false;
            void willComeOfAge(Date earliest) override
            {
                EXPECT_FALSE(hasBegun);
                seconds.push_back((earliest - now).count());
            }
            void willScan(const FileURL& /*folder*/) override { EXPECT_THAT(seconds, IsEmpty()); }
            void willPerform(std::size_t /*index*/, std::size_t /*count*/) override
            {
                hasBegun = true;
            }
        };
        Observer observer;
        engineOn(m_disk).sweep(folders, Seconds(60), now, now, &observer);
        return observer.seconds;
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

TEST_F(SweepEngineTest, TakesNothingFromAFolderThatComesIntoThePlaceOfAScannedOne)
{
    struct Swapper final : SweepObserver {
        explicit Swapper(InMemoryFileManager& files)
            : disk(files)
        {
        }
        void willPerform(std::size_t index, std::size_t /*count*/) override
        {
            if (index > 0)
                return;
            disk.relocate("/two", "/away");
            disk.addLink("/two", "/outside");
        }
        void didFail(const PlannedAction& action, const std::exception& /*error*/) override
        {
            failed.push_back(action.source.path());
        }
        InMemoryFileManager& disk;
        std::vector<std::string> failed;
    };
    addFile("/one/a");
    addFile("/two/b");
    addFile("/outside/b");
    Swapper swapper{m_disk};

    const SweepRecord record = engineOn(m_disk).sweep(
        {watched("/one", {movingTo("/out")}), watched("/two", {movingTo("/out")})}, Seconds(60),
        now, now, &swapper);

    EXPECT_THAT(destinations(record), ElementsAre("/out/a"));
    EXPECT_THAT(swapper.failed, ElementsAre("/two/b"));
    EXPECT_EQ(m_disk.content("/away/b"), "/two/b");
    EXPECT_EQ(m_disk.content("/outside/b"), "/outside/b");
}

TEST_F(SweepEngineTest, KeepsNoFolderOpenThatNothingIsTakenOutOf)
{
    const TemporaryFolder home;
    home.write("busy/a", "A");
    home.write("busy/b", "B");
    home.makeFolder("idle");
    LinuxFileManager files;
    struct Observer final : SweepObserver {
        std::vector<std::string> open;
        void didPerform(const JournalEntry& /*entry*/) override
        {
            for (const auto& file : std::filesystem::directory_iterator("/proc/self/fd"))
                open.push_back(std::filesystem::read_symlink(file.path()).string());
        }
    };
    Observer observer;
    Rule rule = movingTo(home.path("out"));

    SweepEngine{Executor(JournalStore(home.url("journal.json"), files), files), files}.sweep(
        {watched(home.path("busy"), {rule}), watched(home.path("idle"), {rule})}, Seconds(0),
        SystemClock{}.now(), SystemClock{}.now() + Seconds(60), &observer);

    EXPECT_THAT(observer.open, Contains(home.path("busy")));
    EXPECT_THAT(observer.open, Not(Contains(home.path("idle"))));
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

TEST_F(SweepEngineTest, TellsOnceWhenTheEarliestFileOfAllFoldersComesOfAge)
{
    addFile("/one/young", 10);
    addFile("/one/of age", 3600);
    addFile("/two/younger", 5);
    addFile("/two/first", 55);
    addFile("/three/last", 1);

    EXPECT_THAT(comingOfAgeAfter({watched("/one", {movingTo("/out")}),
                    watched("/two", {movingTo("/out")}), watched("/three", {movingTo("/out")})}),
        ElementsAre(5));
    EXPECT_TRUE(m_disk.fileExists(FileURL("/out/of age")));
}

TEST_F(SweepEngineTest, CountsFilesTooYoungForTheirRuleAsWellAsThoseThatHaveNotRested)
{
    Rule aged = movingTo("/out");
    aged.match.minAge = Seconds(100);
    const std::vector<WatchedFolder> folders{watched("/in", {aged})};
    addFile("/in/not rested", 10);
    EXPECT_THAT(comingOfAgeAfter(folders), ElementsAre(90));

    addFile("/in/rested", 70);
    EXPECT_THAT(comingOfAgeAfter(folders), ElementsAre(30));
}

TEST_F(SweepEngineTest, TellsOfNoComingOfAgeWhenNothingWaitsForIt)
{
    addFile("/in/of age", 3600);
    addFile("/in/unfinished.part", 10);
    addFile("/other/without a rule", 10);
    // Planned, so that it waits for nothing, though it cannot be moved.
    addFile("/in/stuck", 3600);
    m_disk.addFile("/blocked", "");
    Rule blocked = movingTo("/blocked");
    blocked.match.namePattern = "stuck";

    EXPECT_THAT(
        comingOfAgeAfter({watched("/in", {blocked, movingTo("/out")}), watched("/other", {})}),
        IsEmpty());
    EXPECT_TRUE(m_disk.fileExists(FileURL("/in/stuck")));
    EXPECT_FALSE(m_disk.fileExists(FileURL("/in/of age")));
}

TEST_F(SweepEngineTest, TellsOfComingOfAgeInARehearsalToo)
{
    struct Observer final : SweepObserver {
        std::optional<Date> told;
        void willComeOfAge(Date earliest) override { told = earliest; }
    };
    addFile("/in/young", 10);
    Observer observer;

    const Rehearsal rehearsal = engineOn(m_disk).rehearse(
        {watched("/in", {movingTo("/out")})}, Seconds(60), now, &observer);

    EXPECT_EQ(rehearsal.size(), 0U);
    EXPECT_EQ(observer.told, now + Seconds(50));
}

TEST_F(SweepEngineTest, FindsTheFileSweepableAtTheMomentThatItTold)
{
    addFile("/in/young", 10.1);
    Rule aged = movingTo("/out");
    aged.match.minAge = Seconds(0.3);
    aged.match.ageBasis = AgeBasis::added;
    const std::vector<WatchedFolder> folders{watched("/in", {aged})};
    SweepEngine engine = engineOn(m_disk);

    const auto due = engine.nextSweepDue(folders, Seconds(60), now);

    ASSERT_TRUE(due);
    EXPECT_GT(*due, now);
    EXPECT_THAT(
        destinations(engine.sweep(folders, Seconds(60), *due, *due)), ElementsAre("/out/young"));
}

TEST_F(SweepEngineTest, TellsWhenASweepIsNextDue)
{
    const std::vector<WatchedFolder> folders{watched("/in", {movingTo("/out")})};
    SweepEngine engine = engineOn(m_disk);
    m_disk.addFolder("/in");
    EXPECT_EQ(engine.nextSweepDue(folders, Seconds(60), now), std::nullopt);

    addFile("/in/young", 10);
    EXPECT_EQ(engine.nextSweepDue(folders, Seconds(60), now), now + Seconds(50));

    addFile("/in/of age", 60);
    const std::vector<std::string> before = m_disk.tree();
    EXPECT_EQ(engine.nextSweepDue(folders, Seconds(60), now), now);
    EXPECT_EQ(m_disk.tree(), before);

    EXPECT_THROW(engine.nextSweepDue({watched("/absent", {})}, Seconds(60), now),
        std::filesystem::filesystem_error);
}

TEST_F(SweepEngineTest, TouchesNothingWhenItsObserverEndsItBetweenTwoScans)
{
    struct Observer final : SweepObserver {
        std::vector<std::string> scanned;
        std::size_t scans = 0;
        bool hasToldOfAge = false;
        bool shouldStop() override { return scanned.size() == scans; }
        void willScan(const FileURL& folder) override { scanned.push_back(folder.path()); }
        void willComeOfAge(Date /*earliest*/) override { hasToldOfAge = true; }
    };
    addFile("/one/a");
    addFile("/one/young", 10);
    addFile("/two/b");
    const std::vector<WatchedFolder> folders{
        watched("/one", {movingTo("/out")}), watched("/two", {movingTo("/out")})};
    const std::vector<std::string> before = m_disk.tree();
    for (std::size_t scans : {0U, 1U}) {
        SCOPED_TRACE(scans);
        Observer sweeping;
        Observer rehearsing;
        Observer asking;
        sweeping.scans = rehearsing.scans = asking.scans = scans;
        SweepEngine engine = engineOn(m_disk);

        const SweepRecord record = engine.sweep(folders, Seconds(60), now, now, &sweeping);

        EXPECT_EQ(record.startedAt, now);
        EXPECT_THAT(record.entries, IsEmpty());
        EXPECT_EQ(engine.rehearse(folders, Seconds(60), now, &rehearsing).size(), 0U);
        EXPECT_EQ(engine.nextSweepDue(folders, Seconds(60), now, &asking), std::nullopt);
        EXPECT_EQ(m_disk.tree(), before);
        for (const Observer* observer : {&sweeping, &rehearsing, &asking}) {
            EXPECT_EQ(observer->scanned.size(), scans);
            EXPECT_FALSE(observer->hasToldOfAge);
        }
    }
}
