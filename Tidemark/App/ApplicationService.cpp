#include "ApplicationService.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace tidemark {

namespace {

/// What QDBusConnection::registerService() does, without waiting for the answer: the icon comes first.
void requestName(QDBusConnection& bus)
{
    QDBusMessage request = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("RequestName"));
    constexpr unsigned doNotQueue = 4;  // as the D-Bus Specification numbers it
    request << ApplicationService::name() << doNotQueue;
    bus.asyncCall(request);
}

}  // namespace

ApplicationService::ApplicationService(Commands commands)
    : m_commands(std::move(commands))
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.registerObject(path(), this, QDBusConnection::ExportAllSlots);
    requestName(bus);
}

ApplicationService::~ApplicationService()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.unregisterService(name());
    bus.unregisterObject(path());
}

void ApplicationService::Activate(const QVariantMap& platformData)
{
    m_commands.bringForward(
        platformData.value(QStringLiteral("activation-token")).toString().toStdString());
}

void ApplicationService::Open(const QStringList& /*uris*/, const QVariantMap& platformData)
{
    Activate(platformData);
}

void ApplicationService::ActivateAction(
    const QString& action, const QVariantList& /*parameters*/, const QVariantMap& /*platformData*/)
{
    if (const auto known = actionNamed(action.toStdString()))
        m_commands.perform(*known);
}

}  // namespace tidemark
