#include "InterfaceFixture.h"

#include "MenuBarLabel.h"
#include "MenuContent.h"
#include "MenuWindow.h"

#include <QPushButton>

namespace tidemark {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class Menu : public InterfaceTest {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
protected:
    MenuContent& content(MenuHost host = MenuHost::widgets)
    {
        m_content = std::make_unique<MenuContent>(model(),
            MenuContent::Commands{
                .openSettings = [this] { ++m_openings; }, .quit = [this] { ++m_quits; }},
            host);
        return *m_content;
    }

    std::vector<std::string> texts() { return menuTexts(*m_content); }

    int m_openings = 0;
    int m_quits = 0;
    std::unique_ptr<MenuContent> m_content;

    ~Menu() override { m_content.reset(); }
};

TEST_F(Menu, WithoutSweepsNothingCanBeUndoneAndThereIsNoActivity)
{
    writeSettings(watching({"a", "b"}));
    start();
    content();
    EXPECT_THAT(texts(),
        ElementsAre("(off) Watching 2 folders", "----", "Sweep now", "Pause sweeping",
            "(off) Undo last sweep", "----", "(off) No recent activity", "----",
            "(off) Check for Updates…",
            "(off) Tidemark " + AppModel::version() + " · The Tidemark developers", "Settings…",
            "Quit Tidemark"));
}

TEST_F(Menu, OfTwentyActivitiesTheTenNewestAreShown)
{
    std::vector<std::string> names;
    for (int number = 1; number <= 20; ++number)
        names.push_back("file" + std::to_string(number));
    writeJournal(journalOf(names));
    start();
    ASSERT_EQ(model().activity().size(), 20U);
    content();
    const std::vector<std::string> all = texts();
    const std::vector<std::string> lines{all.begin() + 6, all.begin() + 16};
    EXPECT_THAT(lines,
        ElementsAre("(off) Filed file20", "(off) Filed file19", "(off) Filed file18",
            "(off) Filed file17", "(off) Filed file16", "(off) Filed file15", "(off) Filed file14",
            "(off) Filed file13", "(off) Filed file12", "(off) Filed file11"));
    EXPECT_EQ(all.at(16), "----");
    EXPECT_THAT(all, Contains("Undo last sweep"));
}

TEST_F(Menu, ActivityShowsWhenItHappensAndLinesGoWithTheUndo)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    start();
    content();
    addFile("in/one.pdf");
    addFile("in/two.pdf");
    item(*m_content, "Sweep now")->trigger();
    finishWork();
    EXPECT_THAT(texts(), Contains("(off) Filed one.pdf"));
    EXPECT_THAT(texts(), Contains("(off) Filed two.pdf"));
    EXPECT_THAT(texts(), Not(Contains("(off) No recent activity")));

    item(*m_content, "Undo last sweep")->trigger();
    finishWork();
    EXPECT_THAT(texts(), Contains("(off) No recent activity"));
    EXPECT_THAT(texts(), Contains("(off) Undo last sweep"));
    EXPECT_THAT(texts(), Contains("(off) Paused"));
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
}

TEST_F(Menu, PausingChangesSymbolAndItem)
{
    start();
    content();
    const MenuBarLabel label{model(), {}};
    EXPECT_EQ(label.symbolName(), "sparkles");

    item(*m_content, "Pause sweeping")->trigger();
    EXPECT_TRUE(savedSettings().isPaused);
    EXPECT_EQ(label.symbolName(), "pause.circle");
    EXPECT_THAT(texts(), Contains("Resume sweeping"));
    EXPECT_THAT(texts(), Contains("(off) Paused"));

    item(*m_content, "Resume sweeping")->trigger();
    EXPECT_FALSE(savedSettings().isPaused);
    EXPECT_EQ(label.symbolName(), "sparkles");
    EXPECT_THAT(texts(), Contains("Pause sweeping"));
}

TEST_F(Menu, AnUpdateShowsOnceFoundAndSaysThatItIsBeingInstalled)
{
    startWithUpdates();
    content();
    EXPECT_EQ(texts().size(), 12U);

    const UpdateInfo found{.version = "9.8.7"};
    m_updates.finder.end(found);
    EXPECT_EQ(texts().at(8), "Update to 9.8.7");
    EXPECT_EQ(texts().at(9), "Check for Updates…");
    item(*m_content, "Update to 9.8.7")->trigger();
    EXPECT_THAT(m_updates.installer.installed, ElementsAre(found));
    EXPECT_EQ(texts().at(8), "(off) Installing update…");
    EXPECT_EQ(texts().at(9), "(off) Check for Updates…");

    m_updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_EQ(texts().at(8), "Update to 9.8.7");
    EXPECT_EQ(texts().at(9), "Check for Updates…");
    EXPECT_EQ(texts().size(), 13U);
}

TEST_F(Menu, CheckingForUpdatesShowsWhileItGoesOn)
{
    startWithUpdates();
    content();
    EXPECT_EQ(texts().at(8), "Check for Updates…");
    m_updates.finder.end({});
    item(*m_content, "Check for Updates…")->trigger();
    EXPECT_EQ(m_updates.finder.running(), 1U);
    EXPECT_EQ(texts().at(8), "(off) Checking for updates…");
    m_updates.finder.end({});
    EXPECT_EQ(texts().at(8), "Check for Updates…");
}

TEST_F(Menu, TheDownloadsProgressIsAToolTipBesideTheItemsText)
{
    startWithUpdates();
    content();
    MenuWindow window{*m_content};
    const MenuBarLabel label{model(), {}};
    const QString before = label.toolTip();
    m_updates.finder.end(UpdateInfo{.version = "9.8.7"});
    model().installUpdate();
    runPending();
    auto* row = findNamed<QPushButton>(window, QStringLiteral("Installing update…"));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->toolTip(), "");
    EXPECT_EQ(label.toolTip(), before + "\nInstalling update…");

    m_updates.installer.tellProgress(1'500'000, {});
    EXPECT_EQ(row->toolTip(), "1.5 MB downloaded");
    m_updates.installer.tellProgress(3'000'000, 20'000'000);
    EXPECT_EQ(row->toolTip(), "3.0 MB of 20.0 MB downloaded");
    EXPECT_EQ(row->accessibleDescription(), "3.0 MB of 20.0 MB downloaded");
    EXPECT_EQ(label.toolTip(), before + "\nInstalling update… 3.0 MB of 20.0 MB downloaded");
    EXPECT_EQ(texts().at(8), "(off) Installing update…");

    m_updates.installer.fail(std::runtime_error{"the network is down"});
    EXPECT_EQ(row->toolTip(), "");
    EXPECT_EQ(label.toolTip(), before);
}

TEST_F(Menu, AnEndlessVersionDoesNotMakeItWide)
{
    startWithUpdates();
    content();
    m_updates.finder.end(UpdateInfo{.version = "2." + std::string(100'000, '1')});
    EXPECT_LT(texts().at(8).size(), 120U);
}

TEST_F(Menu, SettingsAndQuitHaveTheirShortcuts)
{
    start();
    content();
    EXPECT_EQ(m_content->settingsAction().shortcut(), QKeySequence{"Ctrl+,"});
    EXPECT_EQ(m_content->quitAction().shortcut(), QKeySequence{"Ctrl+Q"});
    item(*m_content, "Settings…")->trigger();
    item(*m_content, "Quit Tidemark")->trigger();
    EXPECT_EQ(m_openings, 1);
    EXPECT_EQ(m_quits, 1);
}

TEST_F(Menu, NamesReadAsTheyAreInOurMenusAndInThoseOfAPanel)
{
    struct Row {
        const char* name;
        const char* widgets;
        const char* panel;  ///< Before Qt turns the first "&" that is not at the end into "_".
    };
    const Row rows[] = {
        {"a_b.pdf", "Filed a_b.pdf", "Filed a__b.pdf"},
        {"_a_", "Filed _a_", "Filed __a__"},
        {"a_b&c_d&e", "Filed a_b&&c_d&&e", "Filed a&_b&c__d&e"},
        {"a_b&", "Filed a_b&&", "Filed a&_b&"},
        {"a&b_c", "Filed a&&b_c", "Filed a&&b\u02CDc"},
        {"Q&A.pdf", "Filed Q&&A.pdf", "Filed Q&&A.pdf"},
        {"a & b & c", "Filed a && b && c", "Filed a && b & c"},
        {"end&", "Filed end&&", "Filed end&"},
        {"line\nend\t.txt", "Filed line\uFFFDend\uFFFD.txt", "Filed line\uFFFDend\uFFFD.txt"},
        {"\u202Egpj.exe", "Filed \uFFFDgpj.exe", "Filed \uFFFDgpj.exe"},
        {"<b>bold</b>", "Filed b>", "Filed b>"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        writeJournal(journalOf({row.name}));
        start();
        content(MenuHost::widgets);
        EXPECT_EQ(texts().at(6), std::string{"(off) "} + row.widgets);
        content(MenuHost::statusNotifier);
        EXPECT_EQ(texts().at(6), std::string{"(off) "} + row.panel);
        m_content.reset();
    }
}

TEST_F(Menu, ANameOf255CharactersIsShortenedInItsMiddle)
{
    writeJournal(journalOf({std::string(251, 'x') + ".pdf"}));
    start();
    content();
    const QString text = QString::fromStdString(texts().at(6)).mid(6);
    EXPECT_EQ(text.size(), 80);
    EXPECT_TRUE(text.startsWith("Filed xxx"));
    EXPECT_TRUE(text.contains(QChar{0x2026}));
    EXPECT_TRUE(text.endsWith("xxx.pdf"));
}

}  // namespace tidemark
