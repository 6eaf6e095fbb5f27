#include "InterfaceFixture.h"

#include "UpdateAlertPanel.h"
#include "UpdateError.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace tidemark {

using testing::ElementsAre;

class UpdateAlertPanelTest : public InterfaceTest {
public:
    ~UpdateAlertPanelTest() override { m_model.reset(); }

protected:
    void show(const UpdateAlert& alert)
    {
        m_answers.clear();
        m_panel.show(alert, [this](std::size_t button) { m_answers.push_back(button); });
    }

    /// The buttons' texts from left to right.
    std::vector<std::string> buttons()
    {
        runPending();
        const QList<QAbstractButton*> shown = box().buttons();
        std::vector<QPushButton*> all;
        all.reserve(static_cast<std::size_t>(shown.size()));
        for (QAbstractButton* button : shown)
            all.push_back(qobject_cast<QPushButton*>(button));
        std::ranges::sort(all, {}, [](const QPushButton* button) { return button->x(); });
        std::vector<std::string> texts;
        for (const QPushButton* button : all)
            texts.push_back((button->isDefault() ? "[" : "")
                + button->text().remove(QChar{'&'}).toStdString()
                + (button->isDefault() ? "]" : ""));
        return texts;
    }

    QLabel& informativeLabel()
    {
        return *box().findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    }

    void press(const char* text)
    {
        for (QAbstractButton* button : box().buttons()) {
            if (button->text().remove(QChar{'&'}) == QString::fromUtf8(text))
                return button->click();
        }
        FAIL() << "no button " << text;
    }

    QMessageBox& box() { return *m_panel.box(); }

    const UpdateAlert m_prompt = UpdateAlert::newVersion("1.3", "1.2");
    UpdateAlertPanel m_panel;
    std::vector<std::size_t> m_answers;
};

TEST_F(UpdateAlertPanelTest, ThePromptHasItsTextsAndItsButtonsInTheirOrder)
{
    show(m_prompt);
    EXPECT_TRUE(box().isVisible());
    EXPECT_EQ(box().text(), "A new version of Tidemark is available");
    EXPECT_EQ(box().informativeText(),
        "Tidemark 1.3 is ready to install — you have 1.2. The app will update itself and "
        "relaunch.");
    EXPECT_THAT(buttons(), ElementsAre("[Install]", "Later"));
}

TEST_F(UpdateAlertPanelTest, OtherAlertsHaveOneDefaultButton)
{
    const auto failure = [](UpdateError::Case kind) {
        return UpdateAlert::failure(
            std::make_exception_ptr(UpdateError{kind, "reason"}), "tidemark.example/download");
    };
    const UpdateAlert alerts[] = {UpdateAlert::upToDate("1.2"),
        failure(UpdateError::Case::readOnlyLocation), failure(UpdateError::Case::badSignature)};
    for (const UpdateAlert& alert : alerts) {
        show(alert);
        EXPECT_EQ(box().text().toStdString(), alert.message);
        EXPECT_EQ(box().informativeText().toStdString(), alert.informativeText);
        EXPECT_THAT(buttons(), ElementsAre("[OK]"));
        press("OK");
        EXPECT_THAT(m_answers, ElementsAre(0U));
    }
}

TEST_F(UpdateAlertPanelTest, EachButtonIsAnAnswerAndEndsIt)
{
    show(m_prompt);
    press("Install");
    EXPECT_THAT(m_answers, ElementsAre(0U));
    EXPECT_EQ(m_panel.box(), nullptr);
    show(m_prompt);
    press("Later");
    EXPECT_THAT(m_answers, ElementsAre(1U));
    EXPECT_EQ(m_panel.box(), nullptr);
}

TEST_F(UpdateAlertPanelTest, ReturnInstallsAndEscapeAndClosingLeaveItForLater)
{
    show(m_prompt);
    QTest::keyClick(&box(), Qt::Key_Return);
    EXPECT_THAT(m_answers, ElementsAre(0U));
    show(m_prompt);
    QTest::keyClick(&box(), Qt::Key_Escape);
    EXPECT_THAT(m_answers, ElementsAre(1U));
    show(m_prompt);
    box().close();
    EXPECT_THAT(m_answers, ElementsAre(1U));
    show(UpdateAlert::upToDate("1.2"));
    QTest::keyClick(&box(), Qt::Key_Escape);
    EXPECT_THAT(m_answers, ElementsAre(0U));
}

TEST_F(UpdateAlertPanelTest, HoldsNothingUp)
{
    show(m_prompt);
    EXPECT_FALSE(box().isModal());
    EXPECT_TRUE(m_answers.empty());
}

TEST_F(UpdateAlertPanelTest, AnotherAlertMayBeShownByTheAnswer)
{
    m_panel.show(m_prompt, [this](std::size_t /*button*/) { show(UpdateAlert::upToDate("1.2")); });
    press("Install");
    ASSERT_NE(m_panel.box(), nullptr);
    EXPECT_EQ(box().text(), "You're up to date");
    EXPECT_TRUE(box().isVisible());
    runPending();
    press("OK");
    EXPECT_THAT(m_answers, ElementsAre(0U));
}

TEST_F(UpdateAlertPanelTest, OneThatIsWithdrawnIsNotAnswered)
{
    show(m_prompt);
    const QPointer<QMessageBox> before{&box()};
    m_panel.withdraw();
    EXPECT_EQ(m_panel.box(), nullptr);
    EXPECT_FALSE(before && before->isVisible());
    m_panel.withdraw();
    EXPECT_TRUE(m_answers.empty());
}

TEST_F(UpdateAlertPanelTest, AVersionIsShownAsItIs)
{
    show(UpdateAlert::newVersion("<b>2</b>&amp;\n\u202E3", "1.2"));
    EXPECT_EQ(informativeLabel().textFormat(), Qt::PlainText);
    EXPECT_TRUE(informativeLabel().text().startsWith(
        QStringLiteral("Tidemark <b>2</b>&amp;\uFFFD\uFFFD3 is ready to install")));
}

TEST_F(UpdateAlertPanelTest, AnEndlessVersionStillFitsOnAScreen)
{
    show(UpdateAlert::newVersion(std::string(100'000, '2'), "1.2"));
    EXPECT_LT(box().width(), 1000);
    EXPECT_LT(box().height(), 700);
}

TEST_F(UpdateAlertPanelTest, MayEndWhileAnAlertIsUp)
{
    UpdateAlertPanel panel;
    panel.show(m_prompt, [](std::size_t /*button*/) { FAIL(); });
}

TEST_F(UpdateAlertPanelTest, TheUserIsAskedAndTheUpdateInstalled)
{
    FakeUpdates updates{UserDefaults::file()};
    UpdateServices services{.finder = updates.finder,
        .alerts = m_panel,
        .installer = updates.installer,
        .defaults = updates.defaults,
        .countdown = updates.countdown,
        .downloadPage = "tidemark.example/download",
        .quit = [] {}};
    m_updateServices.emplace(services);
    start();
    const UpdateInfo found{.version = "1.3"};
    model().checkForUpdatesManually();
    updates.finder.end({});
    updates.finder.end(found);
    press("Install");
    EXPECT_THAT(updates.installer.installed, ElementsAre(found));
    updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_EQ(box().text(), "Update failed");
    press("OK");
    m_model.reset();
}

}  // namespace tidemark
