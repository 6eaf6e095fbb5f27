#include "MenuContent.h"

#include "Branding.h"
#include "PlainText.h"
#include "ProgressText.h"

#include <algorithm>

namespace tidemark {

static constexpr const char* lineProperty = "isLine";

MenuContent::MenuContent(AppModel& model, Commands commands, MenuHost host)
    : m_model(model)
    , m_commands(std::move(commands))
    , m_host(host)
    , m_status(makeLine())
{
    m_menu.addAction(m_status);
    m_menu.addSeparator();
    addItem(QStringLiteral("Sweep now"), [this] { m_model.sweepNow(); });
    m_pause = addItem({}, [this] { m_model.togglePause(); });
    m_undo = addItem(QStringLiteral("Undo last sweep"), [this] { m_model.undoLast(); });
    m_menu.addSeparator();
    m_afterActivity = m_menu.addSeparator();
    m_menu.setToolTipsVisible(true);
    m_update = addItem({}, [this] { m_model.installUpdate(); });
    m_check = addItem({}, [this] { m_model.checkForUpdatesManually(); });
    QAction* about = makeLine();
    setText(*about,
        QStringLiteral("%1 %2 · %3")
            .arg(QString::fromUtf8(Branding::fullName), QString::fromStdString(AppModel::version()),
                QString::fromUtf8(Branding::maker)));
    m_menu.addAction(about);
    m_settings = addItem(QStringLiteral("Settings…"), [this] { m_commands.openSettings(); });
    m_settings->setShortcut(QKeySequence{Qt::CTRL | Qt::Key_Comma});
    m_quit = addItem(QStringLiteral("Quit Tidemark"), [this] { m_commands.quit(); });
    m_quit->setShortcut(QKeySequence{Qt::CTRL | Qt::Key_Q});
    followModel();
}

QAction* MenuContent::addItem(const QString& text, std::function<void()> command)
{
    QAction* item = m_menu.addAction(menuText(text, m_host));
    // Not by their names, as some desktops would have it.
    item->setMenuRole(QAction::NoRole);
    QObject::connect(item, &QAction::triggered, this, std::move(command));
    return item;
}

/// A line of text without action.
QAction* MenuContent::makeLine()
{
    auto* line = new QAction{this};
    line->setEnabled(false);
    line->setProperty(lineProperty, true);
    return line;
}

bool MenuContent::isLine(const QAction& action)
{
    return action.property(lineProperty).toBool();
}

void MenuContent::setText(QAction& action, const QString& text) const
{
    action.setText(menuText(text, m_host));
}

void MenuContent::followModel()
{
    const auto follow = [this](void (AppModel::*changed)(), void (MenuContent::*show)()) {
        QObject::connect(&m_model, changed, this, show);
    };
    follow(&AppModel::settingsChanged, &MenuContent::showStatus);
    follow(&AppModel::canUndoChanged, &MenuContent::showStatus);
    follow(&AppModel::activityChanged, &MenuContent::showActivity);
    follow(&AppModel::availableUpdateChanged, &MenuContent::showUpdates);
    follow(&AppModel::isUpdatingChanged, &MenuContent::showUpdates);
    follow(&AppModel::updateProgressChanged, &MenuContent::showProgress);
    follow(&AppModel::isCheckingForUpdateChanged, &MenuContent::showUpdates);
    showStatus();
    showActivity();
    showUpdates();
}

void MenuContent::showStatus()
{
    setText(*m_status, oneLine(m_model.statusText()));
    setText(*m_pause,
        m_model.settings().isPaused ? QStringLiteral("Resume sweeping")
                                    : QStringLiteral("Pause sweeping"));
    m_undo->setEnabled(m_model.canUndo());
}

void MenuContent::showActivity()
{
    std::vector<QString> lines;
    for (const ActivityItem& item : m_model.activity()) {
        if (lines.size() == activityLines)
            break;
        lines.push_back(menuLine(item.summary()));
    }
    if (lines.empty())
        lines.push_back(QStringLiteral("No recent activity"));

    // An open menu keeps the lines that stay.
    while (m_activity.size() > lines.size()) {
        delete m_activity.back();  // leaves the menu by itself
        m_activity.pop_back();
    }
    while (m_activity.size() < lines.size()) {
        m_activity.push_back(makeLine());
        setText(*m_activity.back(), lines.at(m_activity.size() - 1));
        m_menu.insertAction(m_afterActivity, m_activity.back());
    }
    for (std::size_t index = 0; index < lines.size(); ++index)
        setText(*m_activity.at(index), lines.at(index));
}

void MenuContent::showUpdates()
{
    const bool isInMenu = m_menu.actions().contains(m_update);
    if (m_model.availableUpdate() && !isInMenu)
        m_menu.insertAction(m_check, m_update);
    if (!m_model.availableUpdate() && isInMenu)
        m_menu.removeAction(m_update);
    setText(*m_update, updateText());
    m_update->setEnabled(!m_model.isUpdating());

    const bool isChecking = m_model.isCheckingForUpdate();
    setText(*m_check,
        isChecking ? QStringLiteral("Checking for updates…")
                   : QStringLiteral("Check for Updates…"));
    m_check->setEnabled(m_model.canCheckForUpdates() && !isChecking && !m_model.isUpdating());
}

/// The item's own text stays the same all the time.
void MenuContent::showProgress()
{
    const auto progress = m_model.updateProgress();
    m_update->setToolTip(progress ? progressText(*progress) : QString{});
}

QString MenuContent::updateText() const
{
    if (m_model.isUpdating())
        return QStringLiteral("Installing update…");
    if (!m_model.availableUpdate())
        return {};
    return QStringLiteral("Update to ") + menuLine(m_model.availableUpdate()->version);
}

}  // namespace tidemark
