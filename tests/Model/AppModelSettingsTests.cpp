#include "CommandFailure.h"
#include "ModelFixture.h"

#include <QSignalSpy>

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> paths(const Settings& settings)
{
    std::vector<std::string> result;
    result.reserve(settings.folders.size());
    for (const WatchedFolder& folder : settings.folders)
        result.push_back(folder.path);
    return result;
}

std::vector<std::string> names(const std::vector<Rule>& rules)
{
    std::vector<std::string> result;
    result.reserve(rules.size());
    for (const Rule& rule : rules)
        result.push_back(rule.name);
    return result;
}

}  // namespace

using AppModelSettings = ModelTest;

TEST_F(AppModelSettings, TheStatusTellsHowManyFoldersAreWatched)
{
    struct Row {
        std::vector<std::string> folders;
        bool isPaused;
        std::string text;
    };
    const Row rows[] = {
        {{}, false, "No folders watched"},
        {{"a"}, false, "Watching 1 folder"},
        {{"a", "b"}, false, "Watching 2 folders"},
        {{}, true, "Paused"},
        {{"a"}, true, "Paused"},
        {{"a", "b"}, true, "Paused"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        Settings settings = watching(row.folders);
        settings.isPaused = row.isPaused;
        writeSettings(settings);
        EXPECT_EQ(start().statusText(), row.text);
    }
}

TEST_F(AppModelSettings, AnAddedFolderGetsTheDefaultRulesAndSortsMarkdown)
{
    writeSettings({});
    start();
    m_chooser.answer = {m_home.makeFolder("c"), m_home.makeFolder("a"), m_home.makeFolder("b")};

    model().addFolder();

    const Settings saved = savedSettings();
    EXPECT_THAT(paths(saved), ElementsAre(m_home.path("c"), m_home.path("a"), m_home.path("b")));
    for (const WatchedFolder& folder : saved.folders) {
        EXPECT_TRUE(folder.sortsMarkdown);
        EXPECT_EQ(names(folder.rules), names(AppModel::defaultRules()));
        EXPECT_EQ(folder.rules.at(0).action,
            RuleAction::fileScreenshot(FileURL::directory(m_home.path("Desktop/Screenshots"))));
        EXPECT_EQ(folder.rules.at(2).action,
            RuleAction::archiveByMonth(FileURL::directory(m_home.path("Downloads/Archive"))));
    }
    EXPECT_EQ(model().settings(), saved);
    EXPECT_FALSE(model().didError());
}

TEST_F(AppModelSettings, AFolderIsAddedOnce)
{
    writeSettings(watching({"a"}));
    start();
    m_chooser.answer = {m_home.url("a"), m_home.makeFolder("b"), m_home.makeFolder("b")};

    model().addFolder();

    EXPECT_THAT(paths(savedSettings()), ElementsAre(m_home.path("a"), m_home.path("b")));
}

TEST_F(AppModelSettings, TheFolderOfTidemarksOwnFilesIsNotAdded)
{
    writeSettings({});
    start();
    m_chooser.answer = {m_home.url("support")};
    model().addFolder();
    EXPECT_THAT(model().settings().folders, IsEmpty());
}

TEST_F(AppModelSettings, NothingHappensWhenNoFolderIsChosen)
{
    start();
    QSignalSpy settingsChanges{m_model.get(), &AppModel::settingsChanged};
    model().addFolder();
    EXPECT_EQ(settingsChanges.count(), 0);
    EXPECT_FALSE(m_home.holds("support/settings.json"));
}

TEST_F(AppModelSettings, RemovingTheLastFolderRemovesTheWatcher)
{
    writeSettings(watching({"a", "b"}));
    start();
    ASSERT_NE(model().watcher(), nullptr);
    EXPECT_TRUE(model().watcher()->isStarted());

    model().removeFolder(m_home.path("a"));
    EXPECT_THAT(paths(savedSettings()), ElementsAre(m_home.path("b")));
    EXPECT_NE(model().watcher(), nullptr);

    model().removeFolder(m_home.path("b"));
    EXPECT_EQ(model().watcher(), nullptr);
    EXPECT_THAT(model().watchedFolders(), IsEmpty());
}

TEST_F(AppModelSettings, WithoutFoldersThereIsNoWatcher)
{
    EXPECT_EQ(start().watcher(), nullptr);
}

TEST_F(AppModelSettings, OnlyTheRuleThatIsMeantIsEdited)
{
    const std::vector<Rule> shared{filingPapers(), filingPapers()};
    writeSettings(watching({"a", "b"}, shared));
    start();

    model().editRule(m_home.path("b"), shared[1].id, false);
    model().editRule(m_home.path("b"), shared[0].id, 7);

    const Settings saved = savedSettings();
    EXPECT_EQ(saved.folders.at(0).rules, shared);
    EXPECT_TRUE(saved.folders.at(1).rules.at(0).isEnabled);
    EXPECT_EQ(saved.folders.at(1).rules.at(0).match.minAge, Seconds{7 * secondsPerDay});
    EXPECT_FALSE(saved.folders.at(1).rules.at(1).isEnabled);
    EXPECT_EQ(saved.folders.at(1).rules.at(1).match.minAge, std::nullopt);
}

TEST_F(AppModelSettings, AgesHaveALowerBoundOfOneDay)
{
    const Rule rule = filingPapers();
    writeSettings(watching({"a"}, {rule}));
    start();
    for (const int days : {0, -3, 1}) {
        SCOPED_TRACE(days);
        model().editRule(m_home.path("a"), rule.id, days);
        EXPECT_EQ(savedSettings().folders.at(0).rules.at(0).match.minAge, Seconds{86'400});
    }
}

TEST_F(AppModelSettings, AGracePeriodIsNeverNegative)
{
    start();
    model().setGracePeriodSeconds(-5);
    EXPECT_EQ(savedSettings().gracePeriod, Seconds{0});
    model().setGracePeriodSeconds(90);
    EXPECT_EQ(savedSettings().gracePeriod, Seconds{90});
}

TEST_F(AppModelSettings, OtherEditsAreSavedAtOnce)
{
    writeSettings(watching({"a", "b"}));
    start();
    model().setSortsMarkdown(m_home.path("b"), true);
    model().setMarkdownSubfolder("Notizen");
    model().finishOnboarding();

    const Settings saved = savedSettings();
    EXPECT_FALSE(saved.folders.at(0).sortsMarkdown);
    EXPECT_TRUE(saved.folders.at(1).sortsMarkdown);
    EXPECT_EQ(saved.markdownSubfolder, "Notizen");
    EXPECT_TRUE(saved.hasOnboarded);
    EXPECT_EQ(model().settings(), saved);
}

TEST_F(AppModelSettings, PausingIsSavedAndTakenBack)
{
    start();
    model().togglePause();
    EXPECT_TRUE(savedSettings().isPaused);
    EXPECT_EQ(model().statusText(), "Paused");
    model().togglePause();
    EXPECT_FALSE(savedSettings().isPaused);
}

TEST_F(AppModelSettings, AnEditThatCannotBeSavedStandsAndIsAnError)
{
    writeSettings(watching({"a"}));
    start();
    QSignalSpy errorChanges{m_model.get(), &AppModel::didErrorChanged};
    m_files.setFaults({failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)});

    struct Row {
        const char* name;
        std::function<void()> edit;
    };
    const Row rows[] = {
        {"grace period", [this] { model().setGracePeriodSeconds(5); }},
        {"pause", [this] { model().togglePause(); }},
        {"remove", [this] { model().removeFolder(m_home.path("a")); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.edit();
        EXPECT_TRUE(model().didError());
    }
    EXPECT_EQ(model().settings().gracePeriod, Seconds{5});
    EXPECT_TRUE(model().settings().isPaused);
    EXPECT_THAT(model().settings().folders, IsEmpty());
    EXPECT_EQ(errorChanges.count(), 1);

    m_files.setFaults({});
    model().togglePause();
    EXPECT_FALSE(model().didError());
    EXPECT_EQ(savedSettings(), model().settings());
}

TEST_F(AppModelSettings, ARowTellsWhetherItsFolderCanBeListed)
{
    Settings settings = watching({"fine", "gone"});
    m_home.write("file", "no folder");
    settings.folders.push_back({.path = m_home.path("file")});
    writeSettings(settings);
    std::filesystem::remove(m_home.path("gone"));
    start();

    std::vector<bool> granted;
    for (const WatchedFolderInfo& info : model().watchedFolders())
        granted.push_back(info.isGranted);
    EXPECT_THAT(granted, ElementsAre(true, false, false));

    m_home.makeFolder("gone");
    QSignalSpy rowChanges{m_model.get(), &AppModel::watchedFoldersChanged};
    model().refresh();
    EXPECT_TRUE(model().watchedFolders().at(1).isGranted);
    EXPECT_EQ(rowChanges.count(), 1);
}

TEST_F(AppModelSettings, ObserversAreToldOfWhatIsNewAndOfNothingElse)
{
    writeSettings(watching({"a"}));
    start();
    QSignalSpy settingsChanges{m_model.get(), &AppModel::settingsChanged};
    QSignalSpy rowChanges{m_model.get(), &AppModel::watchedFoldersChanged};
    QSignalSpy activityChanges{m_model.get(), &AppModel::activityChanged};
    QSignalSpy undoChanges{m_model.get(), &AppModel::canUndoChanged};
    QSignalSpy watcherChanges{m_model.get(), &AppModel::watcherChanged};

    model().refresh();
    finishWork();
    EXPECT_EQ(settingsChanges.count() + rowChanges.count() + activityChanges.count()
            + undoChanges.count() + watcherChanges.count(),
        0);

    model().setGracePeriodSeconds(7);
    EXPECT_EQ(settingsChanges.count(), 1);
    EXPECT_EQ(rowChanges.count() + watcherChanges.count(), 0);

    model().removeFolder(m_home.path("a"));
    EXPECT_EQ(settingsChanges.count(), 2);
    EXPECT_EQ(rowChanges.count(), 1);
    EXPECT_EQ(watcherChanges.count(), 1);
}

TEST_F(AppModelSettings, ARefusedChangeIsNoErrorOfSaving)
{
    start();
    EXPECT_THROW(
        model().change([](Workspace&) { throw CommandFailure{"no such folder"}; }), CommandFailure);
    EXPECT_FALSE(model().didError());
    EXPECT_THROW(model().change([](Workspace&) { throw std::runtime_error{"disk full"}; }),
        std::runtime_error);
    EXPECT_TRUE(model().didError());
}

TEST_F(AppModelSettings, WhatAnotherProgramWritesIntoTheFileIsTakenInBeforeASweepOrAChange)
{
    struct Row {
        const char* name;
        std::function<void()> act;
    };
    const Row rows[] = {
        {"sweep", [this] { model().sweepNow(); }},
        {"edit", [this] { model().setGracePeriodSeconds(5); }},
        {"asked", [this] { model().change([](Workspace& each) { pauseBeforeUndo(each); }); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        writeSettings(watching({"in"}));
        start();
        writeSettings(watching({"in", "more"}));
        row.act();
        finishWork();
        EXPECT_EQ(model().settings().folders.size(), 2U);
        EXPECT_EQ(model().watcher()->status().size(), 2U);
        EXPECT_EQ(savedSettings().folders.size(), 2U);
    }
}

TEST_F(AppModelSettings, AFileThatAnotherProgramHasBrokenChangesNothingAndIsKeptAside)
{
    writeSettings(watching({"in"}));
    start();
    m_home.write("support/settings.json", "{\"folders\" : [}");
    model().sweepNow();
    model().sweepNow();
    finishWork();
    EXPECT_EQ(model().settings().folders.size(), 1U);
    EXPECT_THAT(m_log.lines, ElementsAre(testing::HasSubstr("settings.json")));
    EXPECT_THROW(model().requireReadableSettings(), CommandFailure);

    model().setGracePeriodSeconds(5);
    EXPECT_NO_THROW(model().requireReadableSettings());
    EXPECT_EQ(savedSettings().folders.size(), 1U);
    EXPECT_THAT(m_home.names("support"),
        testing::Contains(testing::StartsWith("settings.json.unreadable-")));
}

TEST_F(AppModelSettings, AFileThatIsGoneChangesNothing)
{
    writeSettings(watching({"in"}));
    start();
    std::filesystem::remove(m_home.path("support/settings.json"));
    model().sweepNow();
    finishWork();
    EXPECT_EQ(model().settings().folders.size(), 1U);
}

TEST_F(AppModelSettings, TheVersionIsTheProjects)
{
    EXPECT_THAT(AppModel::version(), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
}

}  // namespace tidemark
