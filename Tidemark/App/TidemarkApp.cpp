#include "TidemarkApp.h"

#include "FormWindow.h"
#include "OnboardingView.h"

#include <QCursor>
#include <QGuiApplication>

#include <chrono>

namespace tidemark {

namespace {

/// Of a window of its own, placed wherever the compositor likes, a menu under the pointer is none.
bool canPlacePopups()
{
    return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

}  // namespace

TidemarkApp::TidemarkApp(AppModel& model, std::function<void()> quit)
    : m_model(model)
    , m_quit(std::move(quit))
    , m_menu(model, commands(), MenuHost::widgets)
    , m_panelMenu(model, commands(), MenuHost::statusNotifier)
    , m_label(model, [this](const QString& /*id*/) { openOnboarding(); })
    , m_settings(model)
{
    QObject::connect(&m_host, &TrayHost::found, this, [this] { showIcon(); });
    QObject::connect(&m_host, &TrayHost::missing, this, [this] { openMenuIfThereIsNothingElse(); });
    QObject::connect(&m_host, &TrayHost::looked, this, [this] {
        if (std::exchange(m_isAskedForward, false))
            bringForward();
    });
}

TidemarkApp::~TidemarkApp() = default;

MenuContent::Commands TidemarkApp::commands()
{
    return {.openSettings = [this] { openSettings(); }, .quit = [this] { m_quit(); }};
}

void TidemarkApp::start(const LaunchOptions& options)
{
    using namespace std::chrono_literals;
    m_isAwaited = options.isAwaited();
    m_host.start(m_isAwaited ? 2s : 20s);
    if (!options.isService)
        m_label.appear();
    if (options.action)
        perform(*options.action);
}

void TidemarkApp::showIcon()
{
    const bool isDrawnByPanel = m_host.kind() == TrayHost::Kind::statusNotifier;
    m_label.showIn(isDrawnByPanel ? m_panelMenu.menu() : m_menu.menu(), [this] { openMenu(); });
    if (!m_label.isShown())
        openMenuIfThereIsNothingElse();
}

void TidemarkApp::openMenuIfThereIsNothingElse()
{
    if (std::exchange(m_isAwaited, false) && !hasOpenWindow())
        openMenuWindow();
}

bool TidemarkApp::hasOpenWindow()
{
    for (const QDialog* window : {settingsWindow(), onboardingWindow(), menuWindow()}) {
        if (window && window->isVisible())
            return true;
    }
    return false;
}

void TidemarkApp::bringForward()
{
    m_label.appear();
    // The bus starts it and activates it in one go: only a moment later it is known whether the icon can
    // be seen.
    m_isAskedForward = m_host.isLooking() && !hasOpenWindow();
    if (m_isAskedForward)
        return;
    if (!hasOpenWindow())
        return m_label.isShown() ? openSettings() : openMenuWindow();
    if (m_menuWindow && m_menuWindow->isVisible())
        openMenuWindow();
    if (settingsWindow() && settingsWindow()->isVisible())
        openSettings();
    if (m_onboarding && m_onboarding->isVisible())
        openOnboarding();
}

void TidemarkApp::perform(AppAction action)
{
    switch (action) {
    case AppAction::sweep:
        return m_model.sweepNow();
    case AppAction::togglePause:
        return m_model.togglePause();
    case AppAction::undo:
        return m_model.undoLast();
    }
}

void TidemarkApp::openSettings()
{
    m_settings.open({&m_menu.settingsAction(), &m_menu.quitAction()});
}

void TidemarkApp::openOnboarding()
{
    if (!m_onboarding) {
        auto* view = new OnboardingView{m_model, [this] { endOnboarding(); }};
        auto window = std::make_unique<FormWindow>(
            QStringLiteral("Welcome to Tidemark"), view, OnboardingView::width);
        window->addActions({&m_menu.settingsAction(), &m_menu.quitAction()});
        window->centre();
        m_onboarding = std::move(window);
    }
    m_onboardingFront.observe(m_onboarding.get());
}

void TidemarkApp::endOnboarding()
{
    m_onboarding->close();
    if (!m_label.isShown())
        openMenuWindow();
}

void TidemarkApp::openMenuWindow()
{
    if (!m_menuWindow)
        m_menuWindow = std::make_unique<MenuWindow>(m_menu);
    m_menuFront.observe(m_menuWindow.get());
}

void TidemarkApp::openMenu()
{
    if (canPlacePopups())
        m_menu.menu().popup(QCursor::pos());
    else
        openMenuWindow();
}

}  // namespace tidemark
