#include "SettingsView.h"

#include "Branding.h"
#include "FolderGroup.h"
#include "FormSection.h"
#include "LinkButton.h"
#include "SecondaryColour.h"
#include "Stepper.h"
#include "Symbols.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <map>

namespace tidemark {

namespace {

QLabel* makeHelp(const QString& text)
{
    auto* label = new QLabel{text};
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    useSecondaryColour(*label);
    return label;
}

QWidget* inOneLine(std::initializer_list<QWidget*> widgets)
{
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout{row};
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return row;
}

QWidget* inOneColumn(std::initializer_list<QWidget*> widgets)
{
    auto* row = new QWidget;
    auto* layout = new QVBoxLayout{row};
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return row;
}

/// Truncated; what another program has written may be beyond all measure.
int wholeSeconds(Seconds period)
{
    constexpr double most = 1'000'000'000;
    return static_cast<int>(std::clamp(std::trunc(period.count()), 0.0, most));
}

}  // namespace

SettingsView::SettingsView(AppModel& model)
    : m_model(model)
{
    auto* layout = new QVBoxLayout{this};
    constexpr int margin = 20;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(margin);
    for (FormSection* section : {makeFolders(), makeMarkdown(), makeGeneral(), makeAbout()})
        layout->addWidget(section);
    layout->addStretch();

    QObject::connect(&m_model, &AppModel::watchedFoldersChanged, this, [this] { showFolders(); });
    QObject::connect(&m_model, &AppModel::settingsChanged, this, [this] { showSettings(); });
    showFolders();
    showSettings();
}

FormSection* SettingsView::makeFolders()
{
    m_folders = new FormSection{QStringLiteral("Folders")};
    m_noFolders = makeHelp(QStringLiteral("No folders yet — add one below."));
    auto* add = new QPushButton{symbolIcon(QStringLiteral("plus")), QStringLiteral("Add folder…")};
    add->setAutoDefault(false);
    QObject::connect(add, &QPushButton::clicked, this, [this] { m_model.addFolder(); });
    auto* addRow = inOneLine({add});
    static_cast<QHBoxLayout*>(addRow->layout())->addStretch();
    m_folders->addRow(m_noFolders);
    m_folders->addRow(addRow);
    return m_folders;
}

FormSection* SettingsView::makeMarkdown()
{
    auto* section = new FormSection{QStringLiteral("Markdown")};
    auto* label = new QLabel{QStringLiteral("Subfolder name")};
    m_subfolder = new QLineEdit;
    m_subfolder->setAccessibleName(label->text());
    label->setBuddy(m_subfolder);
    QObject::connect(m_subfolder, &QLineEdit::textChanged, this,
        [this](const QString& text) { m_model.setMarkdownSubfolder(text.toStdString()); });
    section->addRow(inOneLine({label, m_subfolder}));
    section->addRow(makeHelp(QStringLiteral(
        "In each folder above (when its toggle is on), .md files are moved into a subfolder with "
        "this name — renamed to their title and grouped by month. Leave empty to turn Markdown "
        "sorting off.")));
    return section;
}

FormSection* SettingsView::makeGeneral()
{
    constexpr int most = 600;
    constexpr int step = 15;
    auto* section = new FormSection{QStringLiteral("General")};
    m_gracePeriodText = new QLabel;
    m_gracePeriodText->setWordWrap(true);
    m_gracePeriod = new Stepper{0, most, step};
    QObject::connect(m_gracePeriod, &Stepper::stepped, this,
        [this](int seconds) { m_model.setGracePeriodSeconds(seconds); });
    QWidget* row = inOneLine({m_gracePeriodText, m_gracePeriod});
    static_cast<QHBoxLayout*>(row->layout())->setStretch(0, 1);
    section->addRow(row);
    return section;
}

FormSection* SettingsView::makeAbout()
{
    auto* section = new FormSection{QStringLiteral("About")};
    auto* feedback =
        new LinkButton{QStringLiteral("Send feedback"), QString::fromUtf8(Branding::feedbackPage)};
    auto* website = new LinkButton{QStringLiteral("Website"), QString::fromUtf8(Branding::website)};
    section->addRow(inOneColumn({feedback, website}));
    QLabel* branding = makeHelp(QString::fromUtf8(Branding::line));
    QFont small = branding->font();
    constexpr double smaller = 0.9;
    small.setPointSizeF(small.pointSizeF() * smaller);
    branding->setFont(small);
    section->addRow(branding);
    return section;
}

void SettingsView::showFolders()
{
    const std::vector<WatchedFolderInfo>& folders = m_model.watchedFolders();
    const std::vector<FolderGroup*> groups = groupsOf(folders);
    const bool isNewList = groups != m_groups;
    m_groups = groups;
    for (std::size_t index = 0; index < folders.size(); ++index)
        m_groups.at(index)->show(folders.at(index));
    m_noFolders->setVisible(folders.empty());
    if (isNewList)
        putInOrder();
}

/// The groups of the folders, in their order. Those that are shown already are kept, as far as the user has
/// disclosed them; those of other folders go.
std::vector<FolderGroup*> SettingsView::groupsOf(const std::vector<WatchedFolderInfo>& folders)
{
    std::multimap<std::string, FolderGroup*> before;
    for (FolderGroup* group : m_groups)
        before.emplace(group->path(), group);
    std::vector<FolderGroup*> groups;
    for (const WatchedFolderInfo& info : folders) {
        const auto kept = before.extract(info.folder.path);
        groups.push_back(kept ? kept.mapped() : new FolderGroup{m_model, info});
    }
    for (const auto& [path, group] : before) {
        m_folders->takeRow(group);
        group->hide();
        group->deleteLater();  // it may be its own button that asks
    }
    return groups;
}

void SettingsView::putInOrder()
{
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
        FolderGroup* group = m_groups.at(index);
        m_folders->takeRow(group);
        m_folders->insertRow(static_cast<int>(index) + 1, group);
        group->setVisible(true);
    }
}

void SettingsView::showSettings()
{
    const Settings& settings = m_model.settings();
    const QString subfolder = QString::fromStdString(settings.markdownSubfolder);
    if (m_subfolder->text() != subfolder) {
        const QSignalBlocker quiet{m_subfolder};
        const int caret = m_subfolder->cursorPosition();
        m_subfolder->setText(subfolder);
        m_subfolder->setCursorPosition(caret);
    }
    const int seconds = wholeSeconds(settings.gracePeriod);
    const QString text = QStringLiteral("Wait %1s before touching a new file").arg(seconds);
    m_gracePeriodText->setText(text);
    m_gracePeriod->setAccessibleName(text);
    m_gracePeriod->show(seconds);
}

}  // namespace tidemark
