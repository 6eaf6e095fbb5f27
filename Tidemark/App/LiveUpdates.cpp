#include "LiveUpdates.h"

#include "AppModel.h"
#include "UpdateAddresses.h"

#include <QCoreApplication>

namespace tidemark {

namespace {

/// Belongs to the very program that runs, wherever that was moved or installed to.
QString updater()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/" TIDEMARK_UPDATER);
}

QStringList installArguments()
{
    return {QStringLiteral("install"), QString::number(QCoreApplication::applicationPid()),
        QCoreApplication::applicationFilePath(), QString::fromStdString(AppModel::version())};
}

}  // namespace

LiveUpdates::LiveUpdates()
    : m_finder(updater(), {QStringLiteral("check")}, {})
    , m_installer(updater(), installArguments())
    , m_defaults(UserDefaults::file())
{
}

UpdateServices LiveUpdates::services(std::function<void()> quit)
{
    return {.finder = m_finder,
        .alerts = m_alerts,
        .installer = m_installer,
        .defaults = m_defaults,
        .countdown = m_countdown,
        .downloadPage = UpdateAddresses::downloadPage(),
        .quit = std::move(quit)};
}

}  // namespace tidemark
