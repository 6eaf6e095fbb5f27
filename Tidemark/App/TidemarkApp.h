#pragma once

#include "LaunchOptions.h"
#include "MenuBarLabel.h"
#include "MenuContent.h"
#include "MenuWindow.h"
#include "SettingsWindowController.h"
#include "TrayHost.h"

#include <QDialog>

#include <functional>
#include <memory>

namespace tidemark {

/// The application's face: the icon in the panel with its menu, and the windows, each made when it is first
/// opened. For the main thread, which has a QApplication.
class TidemarkApp : public QObject {
    Q_OBJECT

public:
    /// `model` outlives it. `quit` ends the application.
    TidemarkApp(AppModel& model, std::function<void()> quit);
    ~TidemarkApp() override;

    /// Shows the icon, once there is a panel, and on a first run the onboarding window. Somebody who starts it
    /// where there is no panel for icons gets the menu in a window.
    void start(const LaunchOptions& options);

    /// Somebody has started it again: the open windows come to the front. Settings open when there is none;
    /// where the icon cannot be seen it is the menu.
    void bringForward();

    void perform(AppAction action);

    void openSettings();
    void openOnboarding();
    void openMenuWindow();

    /// What a click on the icon does.
    void openMenu();

    MenuContent& menu() { return m_menu; }
    MenuBarLabel& label() { return m_label; }

    /// Null before they are first opened.
    QDialog* settingsWindow() { return m_settings.window(); }
    QDialog* onboardingWindow() { return m_onboarding.get(); }
    QDialog* menuWindow() { return m_menuWindow.get(); }

private:
    void showIcon();
    void endOnboarding();
    void openMenuIfThereIsNothingElse();
    bool hasOpenWindow();
    MenuContent::Commands commands();

    AppModel& m_model;
    const std::function<void()> m_quit;
    TrayHost m_host;
    MenuContent m_menu;  ///< For our own windows.
    MenuContent m_panelMenu;  ///< For a panel that draws it.
    MenuBarLabel m_label;
    SettingsWindowController m_settings;
    std::unique_ptr<QDialog> m_onboarding;
    std::unique_ptr<MenuWindow> m_menuWindow;
    BringToFront m_onboardingFront{nullptr};
    BringToFront m_menuFront{nullptr};
    bool m_isAwaited = false;  ///< By somebody who has just started it.
    bool m_isAskedForward = false;  ///< Before it was known whether the icon can be seen.
};

}  // namespace tidemark
