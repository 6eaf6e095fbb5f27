#include "InterfaceFixture.h"
#include "OnboardingView.h"

#include <QPushButton>
#include <QTest>

namespace tidemark {

using testing::ElementsAre;

class Onboarding : public InterfaceTest {
protected:
    void SetUp() override { writeSettings(watching({"Desktop"})); }

    QDialog& window() { return *app().onboardingWindow(); }
    bool isShown() { return app().onboardingWindow() && window().isVisible(); }
};

TEST_F(Onboarding, ComesByItselfOnAFirstRun)
{
    launch();
    ASSERT_TRUE(isShown());
    EXPECT_EQ(window().windowTitle(), "Welcome to Tidemark");
    EXPECT_TRUE(window().isActiveWindow());
    EXPECT_THAT(shownTexts(*allOf<OnboardingView>(window()).at(0)),
        ElementsAre("Welcome to Tidemark", "Your Desktop and Downloads, under control.",
            "Screenshots get named and filed automatically.",
            "Old installers are cleaned up once you're done with them.",
            "Downloads older than 30 days are tucked into a dated archive.",
            "All three are on. Nothing is ever deleted — everything moves, and “Undo last sweep” "
            "puts it right back.",
            "Turn on Markdown sorting for a folder and notes file themselves by their "
            "front-matter.",
            "Add folder…", "Start sweeping"));
}

TEST_F(Onboarding, StartSweepingEndsItForGood)
{
    launch();
    QTest::mouseClick(findNamed<QPushButton>(window(), "Start sweeping"), Qt::LeftButton);
    EXPECT_FALSE(isShown());
    EXPECT_TRUE(savedSettings().hasOnboarded);
    launch();
    EXPECT_FALSE(isShown());
}

TEST_F(Onboarding, ReturnStartsWhereverTheFocusIs)
{
    for (const char* focused : {"Start sweeping", "Add folder…"}) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            SCOPED_TRACE(testing::Message() << focused << ", key " << key);
            writeSettings(watching({"Desktop"}));
            m_chooser.answer = {m_home.makeFolder("chosen")};
            launch();
            findNamed<QPushButton>(window(), focused)->setFocus();
            QTest::keyClick(&window(), key);
            EXPECT_FALSE(isShown());
            EXPECT_TRUE(savedSettings().hasOnboarded);
            EXPECT_EQ(savedSettings().folders.size(), 1U);
        }
    }
}

TEST_F(Onboarding, ClosedOtherwiseItComesAgainAtTheNextLaunch)
{
    launch();
    window().close();
    EXPECT_FALSE(isShown());
    EXPECT_FALSE(savedSettings().hasOnboarded);
    launch();
    EXPECT_TRUE(isShown());
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_FALSE(isShown());
    EXPECT_FALSE(savedSettings().hasOnboarded);
}

TEST_F(Onboarding, FoldersCanBeAddedFromIt)
{
    launch();
    m_chooser.answer = {m_home.makeFolder("one"), m_home.makeFolder("two")};
    QTest::mouseClick(findNamed<QPushButton>(window(), "Add folder…"), Qt::LeftButton);
    EXPECT_EQ(savedSettings().folders.size(), 3U);
    EXPECT_TRUE(isShown());
}

}  // namespace tidemark
