#include "InterfaceFixture.h"

#include "FolderGroup.h"
#include "FolderText.h"
#include "RuleLines.h"
#include "SettingsView.h"
#include "Stepper.h"
#include "SymbolLabel.h"

#include <QAccessible>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QToolButton>

#include <algorithm>

namespace tidemark {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class SettingsWindowTest : public InterfaceTest {
protected:
    QDialog& open(Settings settings)
    {
        settings.hasOnboarded = true;
        writeSettings(settings);
        launch({.isAutostart = true});
        app().openSettings();
        runPending();
        return window();
    }

    QDialog& window() { return *app().settingsWindow(); }
    std::vector<std::string> texts() { return shownTexts(*allOf<SettingsView>(window()).at(0)); }
    Stepper& stepper() { return *allOf<Stepper>(window()).at(0); }
    QLineEdit& subfolder() { return *findNamed<QLineEdit>(window(), "Subfolder name"); }

    template <typename Widget>
    Widget& named(const char* name)
    {
        auto* widget = findNamed<Widget>(window(), name);
        if (!widget)
            throw std::runtime_error{std::string{"nothing is called "} + name};
        return *widget;
    }

    void click(QWidget& widget)
    {
        QTest::mouseClick(&widget, Qt::LeftButton);
        runPending();
    }
};

TEST_F(SettingsWindowTest, WithoutFoldersItSaysSo)
{
    open({.gracePeriod = Seconds{30.9}});
    EXPECT_EQ(window().windowTitle(), "Tidemark Settings");
    EXPECT_THAT(texts(),
        ElementsAre("Folders", "No folders yet — add one below.", "Add folder…", "Markdown",
            "Subfolder name", "Notes",
            "In each folder above (when its toggle is on), .md files are moved into a subfolder "
            "with this name — renamed to their title and grouped by month. Leave empty to turn "
            "Markdown sorting off.",
            "General", "Wait 30s before touching a new file", "30", "About", "Send feedback",
            "Website", "Made by The Tidemark developers"));
}

TEST_F(SettingsWindowTest, AFolderIsDisclosedWithItsRulesAndTheMarkdownToggle)
{
    Settings settings = watching({"Desktop"}, AppModel::defaultRules());
    open(settings);
    EXPECT_THAT(texts(), Not(Contains("No folders yet — add one below.")));
    EXPECT_THAT(texts(), Not(Contains("Sort Markdown files")));
    click(named<QToolButton>("Rules of Desktop"));
    const std::vector<std::string> all = texts();
    const std::vector<std::string> folder{all.begin() + 1, all.begin() + 14};
    EXPECT_THAT(folder,
        ElementsAre("Desktop", "~/Desktop", settings.folders[0].rules[0].name,
            "Renamed and filed into a Screenshots folder", settings.folders[0].rules[1].name,
            "Moved to the Trash", "Trash after 30 days", settings.folders[0].rules[2].name,
            "Moved into a dated Archive folder", "Archive after 30 days", "Sort Markdown files",
            "Organize .md by front-matter", "Add folder…"));
}

TEST_F(SettingsWindowTest, SwitchesWriteThrough)
{
    open(watching({"Desktop"}, {filingPapers()}));
    click(named<QToolButton>("Rules of Desktop"));

    click(named<QCheckBox>("File papers, Desktop"));
    EXPECT_FALSE(savedSettings().folders.at(0).rules.at(0).isEnabled);
    click(named<QCheckBox>("Sort Markdown files, Desktop"));
    EXPECT_TRUE(savedSettings().folders.at(0).sortsMarkdown);
    QTest::keyClick(&named<QCheckBox>("File papers, Desktop"), Qt::Key_Space);
    EXPECT_TRUE(savedSettings().folders.at(0).rules.at(0).isEnabled);
}

TEST_F(SettingsWindowTest, FoldersAreAddedAndRemovedAndStayDisclosed)
{
    open(watching({"a", "b"}));
    click(named<QToolButton>("Rules of b"));
    m_chooser.answer = {m_home.makeFolder("c")};
    click(named<QPushButton>("Add folder…"));
    EXPECT_THAT(texts(), Contains("c"));
    click(named<QToolButton>("Stop watching a"));
    EXPECT_THAT(texts(), Not(Contains("a")));
    EXPECT_EQ(savedSettings().folders.size(), 2U);
    EXPECT_TRUE(named<QToolButton>("Rules of b").isChecked());
    EXPECT_FALSE(named<QToolButton>("Rules of c").isChecked());
    EXPECT_EQ(named<QToolButton>("Stop watching b").toolTip(), "Stop watching this folder");
}

TEST_F(SettingsWindowTest, ADoubleClickRemovesOneFolder)
{
    open(watching({"a", "b", "c"}));
    click(named<QToolButton>("Stop watching a"));
    QTest::mouseDClick(&named<QToolButton>("Stop watching b"), Qt::LeftButton);
    runPending();
    // The second press of a double click comes to the row that has moved up, as this event alone.
    EXPECT_EQ(savedSettings().folders.size(), 2U);
}

TEST_F(SettingsWindowTest, ItFollowsWhatIsChangedElsewhere)
{
    const Rule rule = filingPapers();
    open(watching({"a"}, {rule}));
    click(named<QToolButton>("Rules of a"));
    model().editRule(m_home.path("a"), rule.id, false);
    EXPECT_FALSE(named<QCheckBox>("File papers, a").isChecked());
    model().setGracePeriodSeconds(45);
    EXPECT_THAT(texts(), Contains("Wait 45s before touching a new file"));
    model().setMarkdownSubfolder("Zettel");
    EXPECT_EQ(subfolder().text(), "Zettel");
    model().removeFolder(m_home.path("a"));
    EXPECT_THAT(texts(), Contains("No folders yet — add one below."));
}

TEST_F(SettingsWindowTest, AFolderThatCannotBeReadSaysSo)
{
    Settings settings = watching({"fine", "gone"});
    std::filesystem::remove(m_home.path("gone"));
    open(settings);
    std::vector<std::string> tips;
    for (const SymbolLabel* symbol : allOf<SymbolLabel>(window())) {
        if (!symbol->toolTip().isEmpty())
            tips.push_back((symbol->symbol() + ": " + symbol->toolTip()).toStdString());
    }
    EXPECT_THAT(tips,
        testing::UnorderedElementsAre("checkmark.circle.fill: Access granted",
            "exclamationmark.triangle.fill: Needs access — Tidemark asks when it first sweeps "
            "this folder"));
    m_home.makeFolder("gone");
    app().openSettings();
    for (const SymbolLabel* symbol : allOf<SymbolLabel>(window()))
        EXPECT_NE(symbol->symbol(), "exclamationmark.triangle.fill");
}

TEST_F(SettingsWindowTest, TypingASubfolderSavesEveryLetterAndKeepsTheCaret)
{
    open({.markdownSubfolder = "Notes"});
    subfolder().setFocus();
    subfolder().setCursorPosition(2);
    QTest::keyClick(&subfolder(), Qt::Key_X);
    EXPECT_EQ(savedSettings().markdownSubfolder, "Noxtes");
    EXPECT_EQ(subfolder().cursorPosition(), 3);
    QTest::keyClick(&subfolder(), Qt::Key_Y);
    EXPECT_EQ(savedSettings().markdownSubfolder, "Noxytes");
    EXPECT_EQ(subfolder().cursorPosition(), 4);
    subfolder().selectAll();
    QTest::keyClick(&subfolder(), Qt::Key_Delete);
    EXPECT_EQ(savedSettings().markdownSubfolder, "");
}

TEST_F(SettingsWindowTest, TheStepperMovesBy15From0To600)
{
    struct Row {
        int start;
        Qt::Key key;
        int end;
    };
    const Row rows[] = {
        {30, Qt::Key_Up, 45},
        {30, Qt::Key_Down, 15},
        {600, Qt::Key_Up, 600},
        {0, Qt::Key_Down, 0},
        {595, Qt::Key_Up, 600},
        {10, Qt::Key_Down, 0},
        {3600, Qt::Key_Down, 600},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.start << " with " << row.key);
        open({.gracePeriod = Seconds(row.start)});
        EXPECT_THAT(texts(),
            Contains("Wait " + std::to_string(row.start) + "s before touching a new file"));
        EXPECT_EQ(savedSettings().gracePeriod, Seconds(row.start));
        QTest::keyClick(&stepper(), row.key);
        EXPECT_EQ(savedSettings().gracePeriod, Seconds(row.end));
        EXPECT_THAT(
            texts(), Contains("Wait " + std::to_string(row.end) + "s before touching a new file"));
    }
    QTest::keyClicks(&stepper(), "77");
    EXPECT_EQ(savedSettings().gracePeriod, Seconds{600});
}

TEST_F(SettingsWindowTest, OpenedAgainItIsTheSameWindow)
{
    QDialog& first = open(watching({"a"}));
    click(named<QToolButton>("Rules of a"));
    app().openSettings();
    EXPECT_EQ(&window(), &first);
    first.close();
    EXPECT_FALSE(window().isVisible());
    app().openSettings();
    EXPECT_EQ(&window(), &first);
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(named<QToolButton>("Rules of a").isChecked());
}

TEST_F(SettingsWindowTest, ItIs480WideAndCannotBeResized)
{
    open(watching({"a"}));
    EXPECT_EQ(window().width(), 480);
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
    EXPECT_FALSE(window().windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(window().windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    const int before = window().height();
    click(named<QToolButton>("Rules of a"));
    EXPECT_GT(window().height(), before);
}

TEST_F(SettingsWindowTest, With200FoldersItFitsTheScreenAndStaysQuick)
{
    std::vector<std::string> folders(200);
    std::ranges::generate(
        folders, [number = 0]() mutable { return "folder" + std::to_string(number++); });
    open(watching(folders, AppModel::defaultRules()));
    EXPECT_LE(window().height(), window().screen()->availableGeometry().height());
    EXPECT_EQ(allOf<FolderGroup>(window()).size(), 200U);
    // Another folder makes one group more, and no other anew.
    const auto groups = allOf<FolderGroup>(window());
    m_chooser.answer = {m_home.makeFolder("more")};
    click(named<QPushButton>("Add folder…"));
    const auto now = allOf<FolderGroup>(window());
    EXPECT_EQ(now.size(), 201U);
    for (FolderGroup* group : groups)
        EXPECT_THAT(now, Contains(group));
}

TEST_F(SettingsWindowTest, ALongNameIsCutAndWholeInTheTooltip)
{
    const std::string name(255, 'n');
    open(watching({name}));
    const auto labels = window().findChildren<QLabel*>();
    const auto label = std::ranges::find_if(
        labels, [&](const QLabel* each) { return each->text().toStdString() == name; });
    ASSERT_NE(label, labels.end());
    EXPECT_LT((*label)->width(), 480);
    EXPECT_EQ((*label)->toolTip().toStdString(), name);
}

TEST_F(SettingsWindowTest, TheTabKeyGoesFromTopToBottom)
{
    open(watching({"a"}, {filingPapers()}));
    click(named<QToolButton>("Rules of a"));
    named<QToolButton>("Rules of a").setFocus();
    std::vector<std::string> order;
    for (int step = 0; step < 8; ++step) {
        QWidget* focused = window().focusWidget();
        const QString name = focused->accessibleName().isEmpty()
            ? focused->property("text").toString()
            : focused->accessibleName();
        order.push_back(name.toStdString());
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    EXPECT_THAT(order,
        ElementsAre("Rules of a", "Stop watching a", "File papers, a", "Sort Markdown files, a",
            "Add folder…", "Subfolder name", "Wait 0s before touching a new file",
            "Send feedback"));
}

TEST_F(SettingsWindowTest, AScreenReaderGoesFromTopToBottom)
{
    open(watching({"a"}, {filingPapers()}));
    click(named<QToolButton>("Rules of a"));
    m_chooser.answer = {m_home.makeFolder("b")};
    click(named<QPushButton>("Add folder…"));
    const std::vector<std::string> all = accessibleNames(window());
    const auto begin = std::ranges::find(all, "Rules of a");
    ASSERT_GE(all.end() - begin, 15);
    const std::vector<std::string> folders{begin, begin + 15};
    EXPECT_THAT(folders,
        ElementsAre("Rules of a", "a", "~/a", "Access granted", "Stop watching a", "File papers",
            "Filed away", "File papers, a", "Sort Markdown files", "Organize .md by front-matter",
            "Sort Markdown files, a", "Rules of b", "b", "~/b", "Access granted"));
    EXPECT_LT(std::ranges::find(all, "Stop watching b"), std::ranges::find(all, "Add folder…"));
}

TEST_F(SettingsWindowTest, WhatAScreenReaderChangesIsSaved)
{
    open(watching({"a"}, {filingPapers()}));
    click(named<QToolButton>("Rules of a"));
    const auto toggle = [](QWidget& widget) {
        QAccessible::queryAccessibleInterface(&widget)->actionInterface()->doAction(
            QAccessibleActionInterface::toggleAction());
    };
    toggle(named<QCheckBox>("File papers, a"));
    EXPECT_FALSE(savedSettings().folders.at(0).rules.at(0).isEnabled);
    toggle(named<QCheckBox>("Sort Markdown files, a"));
    EXPECT_TRUE(savedSettings().folders.at(0).sortsMarkdown);
    QAccessible::queryAccessibleInterface(&subfolder())
        ->editableTextInterface()
        ->replaceText(0, 5, "Zettel");
    EXPECT_EQ(savedSettings().markdownSubfolder, "Zettel");
}

TEST_F(SettingsWindowTest, GrowingItStaysOnTheScreen)
{
    open(watching({"a"}, AppModel::defaultRules()));
    const QRect screen = window().screen()->availableGeometry();
    window().move(0, screen.bottom() - window().frameGeometry().height());
    click(named<QToolButton>("Rules of a"));
    EXPECT_LE(window().frameGeometry().bottom(), screen.bottom());
    EXPECT_GE(window().frameGeometry().top(), screen.top());
}

TEST_F(SettingsWindowTest, ShortcutsOfTheMenuWorkInIt)
{
    open({});
    QTest::keyClick(&window(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(m_hasQuit);
}

TEST(RuleLines, TellActionAndAge)
{
    const FileURL folder = FileURL::directory("/f");
    struct Row {
        RuleAction action;
        double days;
        const char* symbol;
        const char* subtitle;
        const char* age;
    };
    const Row rows[] = {
        {RuleAction::fixed(SweepAction::trash()), 1, "trash", "Moved to the Trash",
            "Trash after 1 day"},
        {RuleAction::fixed(SweepAction::move(folder)), 2, "folder", "Filed away", "After 2 days"},
        {RuleAction::fixed(SweepAction::rename("x")), 1.5, "folder", "Filed away", "After 1 day"},
        {RuleAction::fileScreenshot(folder), 0.5, "camera",
            "Renamed and filed into a Screenshots folder", "After 0 days"},
        {RuleAction::archiveByMonth(folder), 30, "archivebox", "Moved into a dated Archive folder",
            "Archive after 30 days"},
        {RuleAction::fileMarkdown(folder), 7, "doc.richtext",
            "Filed into a dated Notes folder by front-matter", "After 7 days"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.age);
        const Rule rule{.name = "r",
            .match = {.minAge = Seconds{row.days * secondsPerDay}},
            .action = row.action};
        const RuleLines lines = RuleLines::of(rule);
        EXPECT_EQ(lines.symbol, row.symbol);
        EXPECT_EQ(lines.subtitle, row.subtitle);
        EXPECT_EQ(lines.age, row.age);
    }
    EXPECT_EQ(
        RuleLines::of({.name = "r", .match = {}, .action = rows[0].action}).age, std::nullopt);
}

TEST(FolderText, ShowsTheHomeFolderAsATilde)
{
    EXPECT_EQ(FolderText::displayPath("/Users/x/Desktop", "/Users/x"), "~/Desktop");
    EXPECT_EQ(FolderText::displayPath("/Users/x", "/Users/x"), "~");
    EXPECT_EQ(FolderText::displayPath("/Users/xy/Desktop", "/Users/x"), "/Users/xy/Desktop");
    EXPECT_EQ(FolderText::displayPath("/mnt/a", "/Users/x"), "/mnt/a");
    EXPECT_EQ(FolderText::symbol("/Users/x/Desktop"), "menubar.dock.rectangle");
    EXPECT_EQ(FolderText::symbol("/Users/x/Downloads"), "arrow.down.circle");
    EXPECT_EQ(FolderText::symbol("/Users/x/MyDesktop"), "folder");
    EXPECT_EQ(FolderText::name("/Users/x/Desktop"), "Desktop");
    EXPECT_EQ(FolderText::name("/"), "/");
}

}  // namespace tidemark
