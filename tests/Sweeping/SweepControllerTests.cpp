#include "SweepController.h"

#include "DecodingError.h"
#include "DefaultRules.h"
#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"
#include "ManualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;
using Op = JournalEntry::Op;

namespace {

const ManualClock wallClock{Date(Seconds(1714745100))};
const Date now = wallClock.now();
const FileURL settingsURL{"/support/settings.json"};
const FileURL journalURL{"/support/journal.json"};

SweepController controllerOn(FileManager& disk)
{
    return {SettingsStore(settingsURL, disk, wallClock), JournalStore(journalURL, disk), disk};
}

Rule movingTo(const std::string& folder)
{
    return {.name = "move",
        .match = {},
        .action = RuleAction::fixed(SweepAction::move(FileURL::directory(folder)))};
}

Settings watching(std::string path)
{
    return {.folders = {
                {.path = std::move(path), .rules = {movingTo("/out")}, .sortsMarkdown = false}}};
}

/// Paths "/from/<number>" with `count` entries from `first` on.
SweepRecord recordOf(int first, int count)
{
    SweepRecord record{.startedAt = now, .entries = {}};
    for (int number = first; number < first + count; ++number)
        record.entries.push_back({.op = Op::move,
            .from = "/from/" + std::to_string(number),
            .to = "/to/" + std::to_string(number),
            .at = now});
    return record;
}

std::vector<std::string> namesOf(const std::vector<ActivityItem>& items)
{
    std::vector<std::string> names;
    names.reserve(items.size());
    for (const ActivityItem& item : items)
        names.emplace_back(item.fileName());
    return names;
}

}  // namespace

TEST(SweepController, StartsWithTheDefaultSettingsWithoutAFile)
{
    InMemoryFileManager disk;
    const SweepController controller = controllerOn(disk);

    EXPECT_EQ(controller.settings(), Settings());
    EXPECT_EQ(controller.settingsError(), nullptr);
    EXPECT_FALSE(controller.isPaused());
    EXPECT_TRUE(disk.tree().empty());
}

TEST(SweepController, StartsWithTheDefaultsOnABadFileAndTellsWhy)
{
    InMemoryFileManager disk{{settingsURL.path(), "{torn"}};
    SweepController controller = controllerOn(disk);

    EXPECT_EQ(controller.settings(), Settings());
    ASSERT_NE(controller.settingsError(), nullptr);
    try {
        std::rethrow_exception(controller.settingsError());
    } catch (const DecodingError& error) {
        EXPECT_EQ(error.file(), settingsURL.path());
    }
    EXPECT_EQ(disk.content(settingsURL.path()), "{torn");

    controller.setPaused(true);
    EXPECT_EQ(SettingsStore(settingsURL, disk, wallClock).load(), Settings{.isPaused = true});
    EXPECT_EQ(disk.contentsOfEveryFile().count("{torn"), 1U);
}

TEST(SweepController, ForgetsWhyTheSettingsCouldNotBeReadOnceTheyAreSaved)
{
    InMemoryFileManager disk{{settingsURL.path(), "{torn"}};
    FaultInjectingFileManager files{disk};
    SweepController controller = controllerOn(files);

    files.setFaults({failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)});
    EXPECT_THROW(controller.setPaused(true), std::filesystem::filesystem_error);
    EXPECT_THROW(controller.update({}), std::filesystem::filesystem_error);
    EXPECT_NE(controller.settingsError(), nullptr);

    files.setFaults({});
    controller.update({});
    EXPECT_EQ(controller.settingsError(), nullptr);
}

TEST(SweepController, KeepsSettingsThatCouldNotBeReadForAMoment)
{
    InMemoryFileManager disk;
    SettingsStore(settingsURL, disk, wallClock).save(watching("/in"));
    const std::string good = disk.content(settingsURL.path()).value();
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::readFile, std::errc::permission_denied)};
    SweepController controller = controllerOn(files);

    files.setFaults({});
    controller.setPaused(true);

    EXPECT_EQ(SettingsStore(settingsURL, disk, wallClock).load(), Settings{.isPaused = true});
    EXPECT_EQ(disk.contentsOfEveryFile().count(good), 1U);
    EXPECT_EQ(controller.settingsError(), nullptr);
}

TEST(SweepController, SaysWhenItCannotTellWhetherThereIsASweepToUndo)
{
    InMemoryFileManager disk;
    JournalStore(journalURL, disk).save({{recordOf(0, 1)}});
    FaultInjectingFileManager files{disk, failEvery(FileCall::identity, std::errc::io_error)};
    SweepController controller = controllerOn(files);

    EXPECT_FALSE(controller.canUndo());
    EXPECT_THROW(controller.hasSweepToUndo(), std::filesystem::filesystem_error);
}

TEST(SweepController, SavesPausingAndEveryUpdate)
{
    InMemoryFileManager disk;
    SweepController controller = controllerOn(disk);

    controller.setPaused(true);
    EXPECT_TRUE(controllerOn(disk).isPaused());
    controller.togglePause();
    EXPECT_FALSE(controllerOn(disk).isPaused());
    controller.togglePause();
    EXPECT_TRUE(controllerOn(disk).isPaused());
    const Settings settings = watching("/in");
    controller.update(settings);
    EXPECT_EQ(controllerOn(disk).settings(), settings);
}

TEST(SweepController, KeepsAChangeInMemoryWhenItCannotBeSaved)
{
    InMemoryFileManager disk;
    FaultInjectingFileManager files{
        disk, failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)};
    SweepController controller = controllerOn(files);

    EXPECT_THROW(controller.setPaused(true), std::filesystem::filesystem_error);
    EXPECT_TRUE(controller.isPaused());
    const Settings settings = watching("/in");
    EXPECT_THROW(controller.update(settings), std::filesystem::filesystem_error);
    EXPECT_EQ(controller.settings(), settings);
}

TEST(SweepController, TakesInWhatAnotherProgramWritesRightAfterASave)
{
    /// The other program writes before anybody has looked at the file that was saved.
    struct Editor final : FaultInjectingFileManager {
        explicit Editor(InMemoryFileManager& files)
            : FaultInjectingFileManager(files)
            , disk(files)
        {
        }
        void writeAtomically(const FileURL& url, std::span<const std::string_view> pieces) override
        {
            FaultInjectingFileManager::writeAtomically(url, pieces);
            disk.addFile(url.path(), edited);
        }

        InMemoryFileManager& disk;
        std::string edited;
    };
    InMemoryFileManager disk;
    Editor editor{disk};
    SweepController controller = controllerOn(editor);
    const Settings changed = watching("/in");

    editor.edited = "{\"isPaused\" : true}";
    controller.update(changed);
    EXPECT_TRUE(controller.takeInOtherChanges());
    EXPECT_EQ(controller.settings(), Settings{.isPaused = true});

    editor.edited = "{torn";
    controller.update(changed);
    EXPECT_FALSE(controller.takeInOtherChanges());
    EXPECT_NE(controller.settingsError(), nullptr);
    EXPECT_EQ(controller.settings(), changed);
}

TEST(SweepController, SweepsNothingAndTouchesNoJournalWhilePaused)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    disk.setAllDates("/in/a", distantPast);
    SweepController controller = controllerOn(disk);
    Settings settings = watching("/in");
    settings.isPaused = true;
    controller.update(settings);

    const SweepRecord record = controller.sweepNow(now);

    EXPECT_EQ(record.startedAt, now);
    EXPECT_THAT(record.entries, IsEmpty());
    EXPECT_FALSE(disk.fileExists(journalURL));
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_NE(record.id, controller.sweepNow(now).id);
}

TEST(SweepController, SweepsWithItsSettingsOrWithThoseItIsGiven)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/other/b", "B"}};
    disk.setAllDates("/in/a", distantPast);
    disk.setAllDates("/other/b", distantPast);
    SweepController controller = controllerOn(disk);
    const Settings settings = watching("/in");
    controller.update(settings);

    EXPECT_EQ(controller.sweep(watching("/other"), now).entries.at(0).from, "/other/b");
    EXPECT_EQ(controller.settings(), settings);
    EXPECT_EQ(controller.sweepNow(now).entries.at(0).from, "/in/a");
    EXPECT_EQ(JournalStore(journalURL, disk).load().sweeps.size(), 2U);
}

TEST(SweepController, PreviewsWhatASweepWouldDoEvenWhilePaused)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/out/a", "old"}};
    disk.setAllDates("/in/a", distantPast);
    SweepController controller = controllerOn(disk);
    Settings settings = watching("/in");
    settings.isPaused = true;
    controller.update(settings);

    const Rehearsal preview = controller.preview(now);

    ASSERT_EQ(preview.size(), 1U);
    EXPECT_EQ(preview[0].destination, FileURL("/out/a 2"));
    EXPECT_EQ(disk.content("/in/a"), "A");
}

TEST(SweepController, TellsWhenToSweepNextUnlessPaused)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/other/n.md", ""}};
    disk.setAllDates("/in/a", now - Seconds(10));
    disk.setAllDates("/other/n.md", now - Seconds(20));
    SweepController controller = controllerOn(disk);
    Settings settings = watching("/in");
    const Settings notes{.folders = {{.path = "/other", .rules = {}, .sortsMarkdown = true}}};

    EXPECT_EQ(controller.nextSweepDue(settings, now), now + Seconds(50));
    EXPECT_EQ(controller.nextSweepDue(notes, now), now + Seconds(40));
    settings.gracePeriod = Seconds(10);
    EXPECT_EQ(controller.nextSweepDue(settings, now), now);
    settings.isPaused = true;
    EXPECT_EQ(controller.nextSweepDue(settings, now), std::nullopt);
    EXPECT_EQ(controller.nextSweepDue({}, now), std::nullopt);
    EXPECT_THROW(
        controller.nextSweepDue(watching("/absent"), now), std::filesystem::filesystem_error);
}

TEST(SweepController, UndoesTheLastSweep)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    disk.setAllDates("/in/a", distantPast);
    SweepController controller = controllerOn(disk);
    controller.update(watching("/in"));
    EXPECT_FALSE(controller.canUndo());
    const SweepRecord record = controller.sweepNow(now);
    EXPECT_TRUE(controller.canUndo());

    EXPECT_EQ(controller.undoLast(now), record);
    EXPECT_EQ(disk.content("/in/a"), "A");
    EXPECT_FALSE(controller.canUndo());
    EXPECT_EQ(controller.undoLast(now), std::nullopt);
}

TEST(SweepController, CanUndoARecordWithoutEntriesButNotABadJournal)
{
    InMemoryFileManager disk;
    SweepController controller = controllerOn(disk);
    JournalStore(journalURL, disk).save({{recordOf(0, 0)}});
    EXPECT_TRUE(controller.canUndo());

    disk.remove(journalURL.path());
    disk.addFile(journalURL.path(), "{torn");
    EXPECT_FALSE(controller.canUndo());
    disk.makeUnreadable(journalURL.path());
    EXPECT_FALSE(controller.canUndo());
}

TEST(SweepController, ListsTheNewestActivityFirstAcrossSweeps)
{
    InMemoryFileManager disk;
    JournalStore(journalURL, disk).save({{recordOf(0, 3), recordOf(3, 4)}});
    SweepController controller = controllerOn(disk);

    EXPECT_THAT(namesOf(controller.recentActivity(5)), ElementsAre("6", "5", "4", "3", "2"));
    EXPECT_THAT(
        namesOf(controller.recentActivity(100)), ElementsAre("6", "5", "4", "3", "2", "1", "0"));
    EXPECT_THAT(controller.recentActivity(0), IsEmpty());
}

TEST(SweepController, TellsWhetherTheJournalIsKnownAsItIs)
{
    InMemoryFileManager disk;
    FaultInjectingFileManager files{disk};
    JournalStore(journalURL, disk).save({{recordOf(0, 30)}});
    SweepController controller = controllerOn(files);
    EXPECT_FALSE(controller.hasCurrentJournal());
    EXPECT_TRUE(controller.canUndo());
    EXPECT_TRUE(controller.hasCurrentJournal());
    EXPECT_EQ(controller.recentActivity(20).size(), 20U);
    EXPECT_EQ(files.callCount(FileCall::readFile), 1);

    EXPECT_EQ(controller.recentActivity(21).size(), 21U);
    EXPECT_EQ(files.callCount(FileCall::readFile), 2);
    controller.undoLast(now);
    EXPECT_FALSE(controller.hasCurrentJournal());
}

TEST(SweepController, ListsNoActivityWithoutAJournalAndFailsOnABadOne)
{
    InMemoryFileManager disk;
    SweepController controller = controllerOn(disk);
    EXPECT_THAT(controller.recentActivity(20), IsEmpty());

    disk.addFile(journalURL.path(), "{torn");
    EXPECT_THROW(controller.recentActivity(20), DecodingError);
}

TEST(SweepControllerDeathTest, StopsOnANegativeLimit)
{
    InMemoryFileManager disk;
    EXPECT_DEATH(controllerOn(disk).recentActivity(-1), "limit");
}

TEST(SweepController, PutsTheMarkdownRuleInFrontOfTheOthersOfAFolderThatSortsNotes)
{
    const std::vector<Rule> own{movingTo("/x"), movingTo("/y")};
    const Settings settings{
        .folders = {{.path = "/Users/a/Desktop", .rules = own, .sortsMarkdown = true},
            {.path = "/Users/a/Downloads", .rules = own, .sortsMarkdown = false}}};

    const auto folders = SweepController::effectiveFolders(settings);

    ASSERT_EQ(folders.size(), 2U);
    ASSERT_EQ(folders[0].rules.size(), 3U);
    EXPECT_EQ(folders[0].rules[0].action,
        RuleAction::fileMarkdown(FileURL::directory("/Users/a/Desktop/Notes")));
    EXPECT_EQ(folders[0].rules[1], own[0]);
    EXPECT_EQ(folders[0].rules[2], own[1]);
    EXPECT_EQ(folders[0].path, "/Users/a/Desktop");
    EXPECT_TRUE(folders[0].sortsMarkdown);
    EXPECT_EQ(folders[1], settings.folders[1]);
}

TEST(SweepController, LeavesTheFoldersAsTheyAreWithoutANameForTheNotesFolder)
{
    const Settings settings{
        .folders = {{.path = "/in", .rules = {movingTo("/x")}, .sortsMarkdown = true}},
        .markdownSubfolder = ""};

    EXPECT_EQ(SweepController::effectiveFolders(settings), settings.folders);
}

TEST(SweepController, FilesNotesOfAFolderThatSortsThem)
{
    InMemoryFileManager disk{{"/in/n.md", "---\ntitle: Plan\ndate: 2024-05-03\n---\n"}};
    disk.setAllDates("/in/n.md", distantPast);
    SweepController controller = controllerOn(disk);
    controller.update({.folders = {{.path = "/in", .rules = {}, .sortsMarkdown = true}}});

    EXPECT_EQ(controller.sweepNow(now).entries.at(0).to, "/in/Notes/2024-05/Plan.md");
}
