#include "LiveUpdates.h"

#include "AppModel.h"
#include "SystemCall.h"
#include "UpdateAddresses.h"

#include <QCoreApplication>

#include <fcntl.h>

#include <filesystem>

namespace tidemark {

namespace {

/// The icon is there by then, and a session that has just begun is not held up.
constexpr std::chrono::milliseconds restAfterLaunch{500};

/// The folder of the updater that belongs to the very program that runs. Kept open, so that it is found
/// whatever its path is and wherever it is moved to.
FileDescriptor openedFolder()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto folder = program.parent_path() / TIDEMARK_UPDATER_FOLDER;
    return FileDescriptor{
        uninterrupted([&] { return ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); })};
}

QString updaterIn(const FileDescriptor& folder)
{
    return QStringLiteral("/proc/self/fd/%1/tidemark-updater").arg(folder.get());
}

}  // namespace

LiveUpdates::LiveUpdates(SystemLog& log)
    : m_folder(openedFolder())
    , m_finder(updaterIn(m_folder),
          {QStringLiteral("check"), QString::number(QCoreApplication::applicationPid())},
          {.restAtFirst = restAfterLaunch}, log)
    , m_installer(updaterIn(m_folder),
          {QStringLiteral("install"), QString::number(QCoreApplication::applicationPid()),
              QString::fromStdString(AppModel::version())})
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
