#pragma once

#include "AppModel.h"
#include "MenuText.h"

#include <QMenu>

#include <functional>
#include <vector>

namespace tidemark {

/// The menu: every item shows the model and calls one operation of it. It follows the model as long as it
/// lives, also while it is open.
class MenuContent : public QObject {
public:
    /// What the menu does beside the model.
    struct Commands {
        std::function<void()> openSettings;
        std::function<void()> quit;
    };

    /// How many of the model's activities are shown.
    static constexpr std::size_t activityLines = 10;

    /// `model` outlives it.
    MenuContent(AppModel& model, Commands commands, MenuHost host);

    QMenu& menu() { return m_menu; }

    /// Whether an action of the menu is a line of text that does nothing.
    static bool isLine(const QAction& action);

    /// For windows, in which their shortcuts work as well.
    QAction& settingsAction() { return *m_settings; }
    QAction& quitAction() { return *m_quit; }

private:
    QAction* addItem(const QString& text, std::function<void()> command);
    QAction* makeLine();
    void setText(QAction& action, const QString& text) const;

    void followModel();
    void showStatus();
    void showActivity();
    void showUpdates();
    void showProgress();
    QString updateText() const;

    AppModel& m_model;
    const Commands m_commands;
    const MenuHost m_host;

    QMenu m_menu;
    QAction* m_status;
    QAction* m_pause = nullptr;
    QAction* m_undo = nullptr;
    std::vector<QAction*> m_activity;
    QAction* m_afterActivity = nullptr;
    QAction* m_update = nullptr;
    QAction* m_check = nullptr;
    QAction* m_settings = nullptr;
    QAction* m_quit = nullptr;
};

}  // namespace tidemark
