#include "ApplicationService.h"

#include <QDBusConnection>

namespace tidemark {

ApplicationService::ApplicationService(Commands commands)
    : m_commands(std::move(commands))
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.registerObject(path(), this, QDBusConnection::ExportAllSlots);
    bus.registerService(name());
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
