#include "BringToFront.h"

#include <QApplication>
#include <QEvent>

#include <chrono>

namespace tidemark {

BringToFront::BringToFront(QObject* parent)
    : QObject(parent)
{
    using namespace std::chrono_literals;
    m_patience.setSingleShot(true);
    m_patience.setInterval(500ms);
    QObject::connect(&m_patience, &QTimer::timeout, this, [this] { demandAttention(); });
}

void BringToFront::observe(QWidget* window)
{
    if (window && window != m_window) {
        if (m_window)
            m_window->removeEventFilter(this);
        m_window = window;
        m_window->installEventFilter(this);
    }
    front();
}

void BringToFront::front()
{
    if (!m_window)
        return;
    if (isOutOfReach())
        m_window->hide();
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
    m_patience.start();
}

bool BringToFront::isOutOfReach() const
{
    return QGuiApplication::platformName().startsWith(QStringLiteral("wayland"))
        && m_window->isVisible() && !m_window->isActiveWindow()
        && qEnvironmentVariableIsEmpty("XDG_ACTIVATION_TOKEN");
}

bool BringToFront::eventFilter(QObject* object, QEvent* event)
{
    if (object == m_window && event->type() == QEvent::WindowActivate)
        m_window->raise();
    return QObject::eventFilter(object, event);
}

void BringToFront::demandAttention()
{
    if (m_window && m_window->isVisible() && !m_window->isActiveWindow())
        QApplication::alert(m_window);
}

}  // namespace tidemark
