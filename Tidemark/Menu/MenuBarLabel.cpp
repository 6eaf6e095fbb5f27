#include "MenuBarLabel.h"

#include "PlainText.h"
#include "ProgressText.h"
#include "Symbols.h"

#include <QMenu>

namespace tidemark {

MenuBarLabel::MenuBarLabel(AppModel& model, OpenWindow openWindow)
    : m_model(model)
    , m_openWindow(std::move(openWindow))
{
    for (const auto changed : {&AppModel::settingsChanged, &AppModel::isUpdatingChanged,
             &AppModel::updateProgressChanged})
        QObject::connect(&m_model, changed, this, [this] { follow(); });
}

void MenuBarLabel::appear()
{
    if (std::exchange(m_hasAppeared, true))
        return;
    if (!m_model.settings().hasOnboarded)
        m_openWindow(QStringLiteral("onboarding"));
}

void MenuBarLabel::showIn(QMenu& menu, std::function<void()> clicked)
{
    if (m_icon)
        return;
    m_icon.emplace();
    follow();
    m_icon->setContextMenu(&menu);
    QObject::connect(&*m_icon, &QSystemTrayIcon::activated, this,
        [clicked = std::move(clicked)](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger)
                clicked();
        });
    m_icon->show();
}

QString MenuBarLabel::symbolName() const
{
    return m_model.settings().isPaused ? QStringLiteral("pause.circle")
                                       : QStringLiteral("sparkles");
}

QString MenuBarLabel::toolTip() const
{
    QString text = QStringLiteral("Tidemark: ") + oneLine(m_model.statusText());
    if (m_model.isUpdating())
        text += QStringLiteral("\nInstalling update…");
    if (const auto progress = m_model.updateProgress())
        text += QStringLiteral(" ") + progressText(*progress);
    return text;
}

bool MenuBarLabel::isShown() const
{
    return m_icon && m_icon->isVisible() && QSystemTrayIcon::isSystemTrayAvailable();
}

void MenuBarLabel::follow()
{
    if (!m_icon)
        return;
    // A panel redraws for every call.
    if (const QString text = toolTip(); text != m_icon->toolTip())
        m_icon->setToolTip(text);
    if (m_shownPaused != m_model.settings().isPaused) {
        m_shownPaused = m_model.settings().isPaused;
        m_icon->setIcon(trayIcon(*m_shownPaused));
    }
}

}  // namespace tidemark
