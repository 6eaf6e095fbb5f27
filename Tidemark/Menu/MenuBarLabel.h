#pragma once

#include "AppModel.h"

#include <QSystemTrayIcon>

#include <functional>
#include <optional>

class QMenu;

namespace tidemark {

/// The icon in the panel, which shows whether sweeping is paused.
///
/// For the main thread. QSystemTrayIcon is not touched before `showIn`.
class MenuBarLabel : public QObject {
public:
    /// Opens the window with this id, in front of all others.
    using OpenWindow = std::function<void(const QString& id)>;

    /// `model` outlives it.
    MenuBarLabel(AppModel& model, OpenWindow openWindow);

    /// What is done once, when the application has a face: the first run opens "onboarding".
    void appear();

    /// Puts the icon into the panel; `menu` opens by a right click, and a left click calls `clicked`.
    void showIn(QMenu& menu, std::function<void()> clicked);

    /// The symbol that stands for the model's state.
    QString symbolName() const;

    /// What the icon tells of the model's state, and of an update's download.
    QString toolTip() const;

    /// Whether there is a panel that shows it.
    bool isShown() const;

private:
    void follow();

    AppModel& m_model;
    OpenWindow m_openWindow;
    bool m_hasAppeared = false;
    std::optional<bool> m_shownPaused;
    std::optional<QSystemTrayIcon> m_icon;
};

}  // namespace tidemark
