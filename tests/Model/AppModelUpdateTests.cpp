#include "FakeUpdates.h"
#include "ModelFixture.h"
#include "UpdateError.h"

#include <QSignalSpy>

#include <filesystem>

namespace tidemark {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

UpdateInfo version(const std::string& number)
{
    return {.version = number,
        .downloadURL = QUrl{QStringLiteral("https://example.org/update.zip")},
        .notes = "Faster."};
}

}  // namespace

class AppModelUpdates : public ModelTest {
public:
    ~AppModelUpdates() override { m_model.reset(); }

protected:
    void start(bool hasOnboarded = true)
    {
        Settings settings = watching({"in"}, {filingPapers()});
        settings.hasOnboarded = hasOnboarded;
        writeSettings(settings);
        m_updateServices.emplace(m_updates.services());
        ModelTest::start();
    }

    /// A model whose check at launch found nothing.
    void startAndFindNothing(bool hasOnboarded = true)
    {
        start(hasOnboarded);
        m_updates.finder.end({});
    }

    /// The automatic check after six hours.
    void findAfterSixHours(const std::optional<UpdateInfo>& update)
    {
        m_updates.countdown.runOut();
        m_updates.finder.end(update);
    }

    void findManually(const std::optional<UpdateInfo>& update)
    {
        model().checkForUpdatesManually();
        m_updates.finder.end(update);
    }

    /// A model that installs version 1.3.
    void startInstalling()
    {
        startAndFindNothing();
        findManually(version("1.3"));
        alerts().answer("Install");
    }

    std::string message() const { return m_updates.alerts.up ? m_updates.alerts.up->message : ""; }
    ManualAlerts& alerts() { return m_updates.alerts; }
    ManualUpdateFinder& finder() { return m_updates.finder; }

    static constexpr const char* promptMessage = "A new version of Tidemark is available";
    FakeUpdates m_updates{UserDefaults::file()};
};

TEST_F(AppModelUpdates, WithoutTheServicesThereAreNoUpdates)
{
    ModelTest::start();
    model().checkForUpdate();
    model().checkForUpdatesManually();
    model().promptForUpdate();
    model().installUpdate();
    model().scheduleUpdateChecks();
    finishWork();
    EXPECT_FALSE(model().canCheckForUpdates());
    EXPECT_FALSE(model().availableUpdate());
    EXPECT_FALSE(model().isCheckingForUpdate());
    EXPECT_FALSE(model().isUpdating());
    EXPECT_FALSE(m_home.holds(".config"));
}

TEST_F(AppModelUpdates, ChecksAtLaunchAndEverySixHours)
{
    start();
    EXPECT_EQ(finder().begun, 1);
    EXPECT_EQ(finder().version, AppModel::version());
    EXPECT_EQ(m_updates.countdown.running, Seconds{21600});
    finder().end({});
    for (int checks = 2; checks < 5; ++checks) {
        m_updates.countdown.runOut();
        EXPECT_EQ(finder().begun, checks);
        EXPECT_EQ(m_updates.countdown.running, Seconds{21600});
        finder().end({});
    }
    EXPECT_FALSE(alerts().up);
    EXPECT_FALSE(model().availableUpdate());
}

TEST_F(AppModelUpdates, AnAutomaticCheckDoesNotShow)
{
    start();
    EXPECT_EQ(finder().running(), 1U);
    EXPECT_FALSE(model().isCheckingForUpdate());
    finder().end({});
    EXPECT_EQ(alerts().shown, 0);
}

TEST_F(AppModelUpdates, PromptsForWhatAnAutomaticCheckFinds)
{
    start();
    const QSignalSpy changes{&model(), &AppModel::availableUpdateChanged};
    finder().end(version("1.3"));
    EXPECT_EQ(model().availableUpdate(), version("1.3"));
    EXPECT_EQ(changes.size(), 1);
    EXPECT_EQ(alerts().up,
        (UpdateAlert{.message = "A new version of Tidemark is available",
            .informativeText = "Tidemark 1.3 is ready to install — you have " + AppModel::version()
                + ". The app will update itself and relaunch.",
            .buttons = {"Install", "Later"}}));
}

TEST_F(AppModelUpdates, AfterLaterTheSameVersionIsNotPromptedForAgainButTheNextIs)
{
    start();
    finder().end(version("1.3"));
    alerts().answer("Later");
    EXPECT_EQ(m_updates.defaults.string("qrv.update.promptedVersion"), "1.3");
    EXPECT_FALSE(model().isUpdating());

    findAfterSixHours(version("1.3"));
    EXPECT_EQ(alerts().shown, 1);
    EXPECT_EQ(model().availableUpdate(), version("1.3"));

    findAfterSixHours(version("1.4"));
    EXPECT_EQ(alerts().shown, 2);
    EXPECT_THAT(alerts().up->informativeText, StartsWith("Tidemark 1.4 is ready"));
}

TEST_F(AppModelUpdates, WhatWasLeftForLaterIsRememberedOverARestart)
{
    start();
    finder().end(version("1.3"));
    alerts().answer("Later");
    m_model.reset();
    FakeUpdates next{UserDefaults::file()};
    m_updateServices.emplace(next.services());
    ModelTest::start();
    next.finder.end(version("1.3"));
    EXPECT_EQ(next.alerts.shown, 0);
    model().checkForUpdate();
    next.finder.end(version("1.3.1"));
    EXPECT_EQ(next.alerts.shown, 1);
    m_model.reset();
}

TEST_F(AppModelUpdates, LaterIsRememberedForTheRunWhereItCannotBeWritten)
{
    m_home.write(".config/Tidemark", "no folder");
    start();
    finder().end(version("1.3"));
    alerts().answer("Later");
    findAfterSixHours(version("1.3"));
    EXPECT_EQ(alerts().shown, 1);
}

TEST_F(AppModelUpdates, AManualCheckPromptsAlsoForWhatWasLeftForLater)
{
    start();
    finder().end(version("1.3"));
    alerts().answer("Later");
    findManually(version("1.3"));
    EXPECT_EQ(message(), promptMessage);
}

TEST_F(AppModelUpdates, BeforeOnboardingAnUpdateIsRecordedButNotPromptedFor)
{
    start(false);
    finder().end(version("1.3"));
    findAfterSixHours(version("1.4"));
    EXPECT_EQ(model().availableUpdate(), version("1.4"));
    EXPECT_EQ(alerts().shown, 0);
    EXPECT_FALSE(m_updates.defaults.string(UpdateFlow::promptedVersionKey));

    model().finishOnboarding();
    EXPECT_EQ(alerts().shown, 0);
    findAfterSixHours(version("1.4"));
    EXPECT_EQ(message(), promptMessage);
}

TEST_F(AppModelUpdates, OnboardingThatEndsDuringTheCheckCounts)
{
    start(false);
    model().finishOnboarding();
    finder().end(version("1.3"));
    EXPECT_EQ(message(), promptMessage);
}

TEST_F(AppModelUpdates, AManualCheckPromptsBeforeOnboardingToo)
{
    startAndFindNothing(false);
    findManually(version("1.3"));
    EXPECT_EQ(message(), promptMessage);
}

TEST_F(AppModelUpdates, AManualCheckThatFindsNothingSaysSo)
{
    startAndFindNothing();
    findManually({});
    EXPECT_EQ(alerts().up,
        (UpdateAlert{.message = "You're up to date",
            .informativeText = "Tidemark " + AppModel::version() + " is the latest version.",
            .buttons = {"OK"}}));
    alerts().answer("OK");
    EXPECT_FALSE(alerts().up);
}

TEST_F(AppModelUpdates, AManualCheckShowsAsLongAsItGoesOnAndRunsOnce)
{
    startAndFindNothing();
    const QSignalSpy changes{&model(), &AppModel::isCheckingForUpdateChanged};
    model().checkForUpdatesManually();
    EXPECT_TRUE(model().isCheckingForUpdate());
    EXPECT_EQ(changes.size(), 1);
    model().checkForUpdatesManually();
    EXPECT_EQ(finder().running(), 1U);
    finder().end(version("1.3"));
    EXPECT_FALSE(model().isCheckingForUpdate());
    EXPECT_EQ(changes.size(), 2);
}

TEST_F(AppModelUpdates, AnUpdateThatWasFoundStaysWhenALaterCheckFindsNone)
{
    start();
    finder().end(version("1.3"));
    alerts().answer("Later");
    findAfterSixHours({});
    findManually({});
    EXPECT_EQ(model().availableUpdate(), version("1.3"));
}

TEST_F(AppModelUpdates, PromptingNeedsAnUpdate)
{
    startAndFindNothing();
    model().promptForUpdate();
    model().installUpdate();
    EXPECT_EQ(alerts().shown, 0);
    EXPECT_FALSE(model().isUpdating());
    EXPECT_THAT(m_updates.installer.installed, IsEmpty());
}

TEST_F(AppModelUpdates, InstallHandsTheUpdateToTheInstaller)
{
    startAndFindNothing();
    findManually(version("1.3"));
    const QSignalSpy changes{&model(), &AppModel::isUpdatingChanged};
    alerts().answer("Install");
    EXPECT_THAT(m_updates.installer.installed, ElementsAre(version("1.3")));
    EXPECT_TRUE(model().isUpdating());
    EXPECT_EQ(changes.size(), 1);
    EXPECT_FALSE(m_updates.defaults.string(UpdateFlow::promptedVersionKey));
}

TEST_F(AppModelUpdates, DuringAnInstallNothingElseBegins)
{
    startInstalling();
    model().installUpdate();
    model().promptForUpdate();
    model().checkForUpdatesManually();
    EXPECT_EQ(finder().running(), 0U);
    findAfterSixHours(version("1.4"));
    EXPECT_EQ(m_updates.installer.installed.size(), 1U);
    EXPECT_FALSE(alerts().up);
    EXPECT_FALSE(model().isCheckingForUpdate());
    EXPECT_EQ(model().availableUpdate(), version("1.4"));
}

TEST_F(AppModelUpdates, TheDownloadsProgressShows)
{
    startInstalling();
    EXPECT_FALSE(model().updateProgress());
    const QSignalSpy changes{&model(), &AppModel::updateProgressChanged};
    m_updates.installer.tellProgress(5, {});
    EXPECT_EQ(model().updateProgress(), (UpdateProgress{.received = 5}));
    m_updates.installer.tellProgress(7, 10);
    m_updates.installer.tellProgress(7, 10);
    EXPECT_EQ(model().updateProgress(), (UpdateProgress{.received = 7, .total = 10}));
    EXPECT_EQ(changes.size(), 2);
    m_updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_FALSE(model().updateProgress());
}

TEST_F(AppModelUpdates, AfterAnInstallTheApplicationEnds)
{
    startInstalling();
    EXPECT_EQ(m_updates.quits, 0);
    m_updates.installer.succeed();
    finishWork();
    EXPECT_EQ(m_updates.quits, 1);
    EXPECT_TRUE(model().isUpdating());
    EXPECT_FALSE(alerts().up);
}

TEST_F(AppModelUpdates, AfterAnInstallTheRunningSweepEndsBeforeTheApplication)
{
    startInstalling();
    addFile("in/one.pdf");
    addFile("in/two.pdf");
    m_files.gate.close();
    model().sweepNow();
    m_files.gate.waitUntilSomebodyWaits();
    m_updates.installer.succeed();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_updates.quits, 0);
    m_files.gate.open();
    EXPECT_TRUE(runUntil([&] { return m_updates.quits == 1; }));
    EXPECT_THAT(filed(), UnorderedElementsAre("one.pdf", "two.pdf"));
}

TEST_F(AppModelUpdates, AReadOnlyLocationAsksForAMove)
{
    startInstalling();
    m_updates.installer.fail(UpdateError{UpdateError::Case::readOnlyLocation, "no bundle"});
    EXPECT_FALSE(model().isUpdating());
    EXPECT_EQ(m_updates.quits, 0);
    EXPECT_EQ(alerts().up,
        (UpdateAlert{.message = "Move Tidemark to Applications",
            .informativeText =
                "Tidemark is running from a read-only location (like a disk image or the Downloads "
                "folder). Drag it to your Applications folder, reopen it, then check for updates "
                "again.",
            .buttons = {"OK"}}));
}

TEST_F(AppModelUpdates, EveryOtherFailureSaysThatTheUpdateFailed)
{
    const UpdateAlert expected{.message = "Update failed",
        .informativeText =
            "Couldn't install the update. Please try again later, or download it from "
            "tidemark.example/download.",
        .buttons = {"OK"}};
    startInstalling();
    const auto failBy = [&](const auto& error) {
        m_updates.installer.fail(error);
        EXPECT_EQ(alerts().up, expected);
        EXPECT_FALSE(model().isUpdating());
        alerts().answer("OK");
        model().installUpdate();
    };
    using Case = UpdateError::Case;
    for (const Case kind : {Case::download, Case::unpack, Case::notFound, Case::badSignature})
        failBy(UpdateError{kind, "reason"});
    failBy(std::filesystem::filesystem_error{
        "cannot write", std::make_error_code(std::errc::no_space_on_device)});
    failBy(7);
    EXPECT_THAT(m_log.lines, Contains("the update failed: reason"));
    EXPECT_THAT(m_log.lines, Contains(HasSubstr("No space left on device")));
}

TEST_F(AppModelUpdates, AfterAFailureItCanBeTriedAgain)
{
    startInstalling();
    m_updates.installer.fail(std::runtime_error{"the network is down"});
    alerts().answer("OK");
    findManually(version("1.3"));
    alerts().answer("Install");
    EXPECT_EQ(m_updates.installer.installed.size(), 2U);
    EXPECT_TRUE(model().isUpdating());
}

TEST_F(AppModelUpdates, TheMenusItemInstallsInPlaceOfTheOpenPrompt)
{
    start();
    finder().end(version("1.3"));
    model().installUpdate();
    EXPECT_FALSE(alerts().up);
    EXPECT_TRUE(model().isUpdating());
    m_updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_EQ(message(), "Update failed");
}

TEST_F(AppModelUpdates, APromptThatNobodyAnswersStaysOneAndDoesNotPushForward)
{
    start();
    finder().end(version("1.3"));
    findAfterSixHours(version("1.3"));
    EXPECT_EQ(alerts().shown, 1);
    EXPECT_EQ(alerts().broughtForward, 0);
    findManually(version("1.3"));
    EXPECT_EQ(alerts().shown, 1);
    EXPECT_EQ(alerts().broughtForward, 1);
}

TEST_F(AppModelUpdates, AnOpenPromptGivesWayToThatOfANewerVersion)
{
    start();
    finder().end(version("1.3"));
    findAfterSixHours(version("1.4"));
    EXPECT_THAT(alerts().up->informativeText, StartsWith("Tidemark 1.4 "));
    alerts().answer("Install");
    EXPECT_THAT(m_updates.installer.installed, ElementsAre(version("1.4")));
    EXPECT_FALSE(alerts().up);
}

TEST_F(AppModelUpdates, APromptWaitsForTheAlertThatIsUp)
{
    startAndFindNothing();
    findManually({});
    findAfterSixHours(version("1.3"));
    EXPECT_EQ(message(), "You're up to date");
    // Only one of them waits.
    findManually(version("1.3"));
    findManually(version("1.3"));
    alerts().answer("OK");
    EXPECT_EQ(message(), promptMessage);
    alerts().answer("Later");
    EXPECT_FALSE(alerts().up);
}

TEST_F(AppModelUpdates, AWaitingPromptIsLeftOutWhenTheUpdateIsBeingInstalledByThen)
{
    startAndFindNothing();
    findManually({});
    findAfterSixHours(version("1.3"));
    model().installUpdate();
    EXPECT_EQ(message(), "You're up to date");
    alerts().answer("OK");
    EXPECT_FALSE(alerts().up);
}

TEST_F(AppModelUpdates, AFailureWaitsForTheAlertThatIsUp)
{
    startAndFindNothing();
    findManually(version("1.3"));
    alerts().answer("Later");
    findManually({});
    model().installUpdate();
    m_updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_EQ(message(), "You're up to date");
    alerts().answer("OK");
    EXPECT_EQ(message(), "Update failed");
    EXPECT_FALSE(model().isUpdating());
}

TEST_F(AppModelUpdates, AManualCheckThatEndsDuringAnInstallStillAnswers)
{
    start();
    finder().end(version("1.3"));
    model().checkForUpdatesManually();
    alerts().answer("Install");
    finder().end({});
    EXPECT_EQ(message(), "You're up to date");
    EXPECT_TRUE(model().isUpdating());
}

TEST_F(AppModelUpdates, TheModelMayChangeWhileAnAlertIsUp)
{
    start();
    finder().end(version("1.3"));
    addFile("in/paper.pdf");
    model().sweepNow();
    finishWork();
    EXPECT_THAT(filed(), ElementsAre("paper.pdf"));
    model().togglePause();
    alerts().answer("Later");
    EXPECT_TRUE(model().settings().isPaused);
}

TEST_F(AppModelUpdates, AStoppedModelChecksAndAsksNoMore)
{
    start();
    model().checkForUpdatesManually();
    model().stop([] {});
    EXPECT_EQ(finder().running(), 0U);
    EXPECT_FALSE(model().isCheckingForUpdate());
    EXPECT_FALSE(m_updates.countdown.running);
    model().checkForUpdate();
    model().checkForUpdatesManually();
    model().scheduleUpdateChecks();
    EXPECT_EQ(finder().running(), 0U);
    EXPECT_FALSE(m_updates.countdown.running);
}

TEST_F(AppModelUpdates, AStoppedModelTakesItsAlertsAway)
{
    startAndFindNothing();
    findManually({});
    findAfterSixHours(version("1.3"));
    model().stop([] {});
    EXPECT_FALSE(alerts().up);
    model().promptForUpdate();
    model().installUpdate();
    EXPECT_FALSE(alerts().up);
    EXPECT_FALSE(model().isUpdating());
}

TEST_F(AppModelUpdates, AnInstallThatEndsAfterTheModelHasStoppedIsNotTold)
{
    startInstalling();
    model().stop([] {});
    m_updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_FALSE(alerts().up);
    EXPECT_EQ(m_updates.quits, 0);
}

TEST_F(AppModelUpdates, AnInstallMayOutliveTheModel)
{
    startInstalling();
    m_model.reset();
    m_updates.installer.tellProgress(1, {});
    m_updates.installer.succeed();
    EXPECT_EQ(m_updates.quits, 0);
}

TEST_F(AppModelUpdates, NothingIsLeftBehindByAModelThatEndsDuringACheck)
{
    start();
    model().checkForUpdatesManually();
    EXPECT_EQ(finder().running(), 2U);
    m_model.reset();
    EXPECT_EQ(finder().running(), 0U);
    EXPECT_FALSE(m_updates.countdown.running);
}

TEST_F(AppModelUpdates, AVersionThatIsEndlessIsShortenedForPeopleOnly)
{
    startAndFindNothing();
    const std::string endless = "2." + std::string(100'000, '1');
    findManually(version(endless));
    EXPECT_LT(alerts().up->informativeText.size(), 200U);
    alerts().answer("Later");
    EXPECT_EQ(m_updates.defaults.string(UpdateFlow::promptedVersionKey), endless);
}

TEST(UserDefaultsTest, RemembersTextsAsTheyAre)
{
    const TemporaryFolder folder;
    const FileURL file = folder.url("deep/Tidemark.conf");
    for (const char* text : {"1.3", "", R"( a, "b"; c=d\n )", "@Invalid()", "Größe №1", "%20"}) {
        UserDefaults{file}.set("qrv.update.promptedVersion", text);
        EXPECT_THAT(
            UserDefaults{file}.string("qrv.update.promptedVersion"), Optional(std::string{text}));
    }
    EXPECT_FALSE(UserDefaults{file}.string("another"));
}

TEST(UserDefaultsTest, WhatIsNoTextIsNotThere)
{
    const TemporaryFolder folder;
    folder.write("a.conf", "[General]\nqrv.update.promptedVersion=1, 2\n");
    EXPECT_FALSE(UserDefaults{folder.url("a.conf")}.string("qrv.update.promptedVersion"));
    folder.write("b.conf", std::string{"\0\xFF[[[", 5});
    EXPECT_FALSE(UserDefaults{folder.url("b.conf")}.string("qrv.update.promptedVersion"));
    EXPECT_FALSE(UserDefaults{folder.url()}.string("qrv.update.promptedVersion"));
}

TEST(UserDefaultsTest, LieInTheUsersConfigurationFolder)
{
    const TemporaryFolder folder;
    const ScopedHome home{folder.path()};
    const ScopedEnvironment configuration{"XDG_CONFIG_HOME", folder.path("conf")};
    EXPECT_EQ(UserDefaults::file().path(), folder.path("conf/Tidemark/Tidemark.conf"));
}

}  // namespace tidemark
