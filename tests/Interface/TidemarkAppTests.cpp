#include "InterfaceFixture.h"

#include <QPushButton>
#include <QTest>

namespace tidemark {

using testing::Contains;

class App : public InterfaceTest {
protected:
    void SetUp() override
    {
        Settings settings = watching({"in"}, {filingPapers()});
        settings.hasOnboarded = true;
        writeSettings(settings);
    }

    static bool isShown(const QDialog* window) { return window && window->isVisible(); }

    QPushButton& row(const char* name)
    {
        return *findNamed<QPushButton>(*app().menuWindow(), name);
    }
};

TEST_F(App, WhereThereIsNoTrayTheMenuStandsInAWindow)
{
    launch();
    ASSERT_TRUE(isShown(app().menuWindow()));
    EXPECT_FALSE(isShown(app().settingsWindow()));
    EXPECT_FALSE(isShown(app().onboardingWindow()));
}

TEST_F(App, StartedByTheSessionOrTheBusItOpensNoWindow)
{
    for (const LaunchOptions& options :
        {LaunchOptions{.isAutostart = true}, LaunchOptions{.isService = true}}) {
        launch(options);
        EXPECT_FALSE(isShown(app().menuWindow()));
    }
}

TEST_F(App, StartedByTheBusOnAFirstRunItWelcomesWhenItIsActivated)
{
    writeSettings(watching({"in"}));
    launch({.isService = true});
    EXPECT_FALSE(isShown(app().onboardingWindow()));
    app().bringForward();
    EXPECT_TRUE(isShown(app().onboardingWindow()));
}

TEST_F(App, StartedAgainWithoutATrayItOpensTheMenuAgain)
{
    launch();
    app().menuWindow()->close();
    app().bringForward();
    EXPECT_TRUE(isShown(app().menuWindow()));
    EXPECT_FALSE(isShown(app().settingsWindow()));
}

TEST_F(App, StartedAgainItOpensNothingBesideAnOpenWindow)
{
    launch({.isAutostart = true});
    app().openSettings();
    app().bringForward();
    EXPECT_TRUE(isShown(app().settingsWindow()));
    EXPECT_FALSE(isShown(app().menuWindow()));
}

TEST_F(App, OnceOnboardedWithoutATrayTheMenuIsInSight)
{
    writeSettings(watching({"in"}));
    launch();
    ASSERT_TRUE(isShown(app().onboardingWindow()));
    EXPECT_FALSE(isShown(app().menuWindow()));
    QTest::keyClick(app().onboardingWindow(), Qt::Key_Return);
    EXPECT_TRUE(isShown(app().menuWindow()));
}

TEST_F(App, TheWindowOfTheMenuDoesWhatTheMenuDoes)
{
    launch();
    addFile("in/a & b.pdf");
    QTest::mouseClick(&row("Sweep now"), Qt::LeftButton);
    finishWork();
    runPending();
    EXPECT_THAT(filed(), Contains("a & b.pdf"));
    EXPECT_THAT(shownTexts(*app().menuWindow()), Contains("Filed a & b.pdf"));

    QTest::keyClick(&row("Undo last sweep"), Qt::Key_Space);
    finishWork();
    runPending();
    EXPECT_TRUE(m_home.holds("in/a & b.pdf"));
    EXPECT_FALSE(row("Undo last sweep").isEnabled());
    EXPECT_THAT(shownTexts(*app().menuWindow()), Contains("No recent activity"));
    EXPECT_TRUE(row("Resume sweeping").isEnabled());

    QTest::mouseClick(&row("Settings…"), Qt::LeftButton);
    EXPECT_TRUE(isShown(app().settingsWindow()));
    QTest::mouseClick(&row("Quit Tidemark"), Qt::LeftButton);
    EXPECT_TRUE(m_hasQuit);
}

TEST_F(App, ActionsOfTheDesktopFileAreCarriedOut)
{
    addFile("in/x.pdf");
    launch({.action = AppAction::sweep});
    finishWork();
    EXPECT_THAT(filed(), Contains("x.pdf"));
    app().perform(AppAction::undo);
    finishWork();
    EXPECT_TRUE(m_home.holds("in/x.pdf"));
    EXPECT_TRUE(savedSettings().isPaused);
    app().perform(AppAction::togglePause);
    EXPECT_FALSE(savedSettings().isPaused);
}

}  // namespace tidemark
