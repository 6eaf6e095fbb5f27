#include "LiveUpdates.h"

#include "UpdateAddresses.h"

namespace tidemark {

LiveUpdates::LiveUpdates(UpdateInstaller& installer)
    : m_installer(installer)
    // This very program, also when its file has been replaced meanwhile.
    , m_finder(QStringLiteral("/proc/self/exe"), {QStringLiteral("--read-update-feed")}, {})
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
