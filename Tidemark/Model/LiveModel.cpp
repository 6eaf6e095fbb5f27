#include "LiveModel.h"

#include "AlreadyRunning.h"
#include "AppSupport.h"
#include "FailureText.h"
#include "FirstStart.h"
#include "RemoteClient.h"
#include "TemporaryDirectory.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace tidemark {

namespace {

FileURL madeSupportFolder(const LiveOptions& options)
{
    if (options.supportFolder) {
        AppSupport::create(*options.supportFolder);
        return *options.supportFolder;
    }
    try {
        FileURL folder = AppSupport::folder();
        AppSupport::create(folder);
        return folder;
    } catch (const std::filesystem::filesystem_error&) {
        FileURL folder =
            TemporaryDirectory::folder().appending("Tidemark-fallback", FileURL::Kind::directory);
        AppSupport::create(folder);
        return folder;
    }
}

/// Waits for commands that are over soon, not for a process that stays.
SupportLock lockOf(const FileURL& supportFolder, const std::function<void()>& whileWaiting)
{
    constexpr std::chrono::milliseconds pause{20};
    for (;;) {
        if (auto lock = SupportLock::tryAcquire(supportFolder))
            return std::move(*lock);
        if (RemoteClient::connect(supportFolder))
            throw AlreadyRunning{supportFolder};
        if (whileWaiting)
            whileWaiting();
        std::this_thread::sleep_for(pause);
    }
}

/// Whether this is the first start.
bool prepare(Workspace& workspace, const LiveOptions& options)
{
    if (options.requiresReadableSettings)
        workspace.requireReadableSettings();
    return seedStandardFolders(workspace);
}

}  // namespace

LiveModel::LiveModel(const LiveOptions& options)
    : m_options(options)
    , m_supportFolder(madeSupportFolder(options))
    , m_lock(lockOf(m_supportFolder, options.whileWaiting))
    , m_fileManager(&m_ownChanges)
    , m_workspace(m_supportFolder, m_fileManager, m_clock)
    , m_isFirstStart(prepare(m_workspace, options))
    , m_folderWatch(m_supportFolder, [this] { repair(); })
{
    m_model.emplace(m_workspace,
        AppModel::Services{.folderChooser = options.folderChooser,
            .alarm = m_alarm,
            .log = options.log,
            .time = m_time,
            .ownChanges = m_ownChanges,
            .updates = options.updates},
        AppModel::Options{.initiative = options.initiative,
            .looksAtLaunch = !m_isFirstStart,
            .watchBackend = options.watchBackend});
    serve();
    m_folderWatch.follow();
}

LiveModel::~LiveModel() = default;

void LiveModel::onBringForward(RemoteControl::BringForward bringForward)
{
    m_bringForward = std::move(bringForward);
    m_remoteControl->onBringForward(m_bringForward);
}

void LiveModel::serve()
{
    m_remoteControl.reset();
    m_remoteControl.emplace(*m_model, m_supportFolder);
    m_remoteControl->onBringForward(m_bringForward);
}

void LiveModel::repair()
{
    if (m_isStopping)
        return;
    const bool isLockLost = !m_lock.isStillThere();
    if (!isLockLost && m_remoteControl && m_remoteControl->isReachable())
        return;
    try {
        m_remoteControl.reset();
        if (isLockLost)
            m_lock = lockOf(m_supportFolder, {});
        serve();
        m_folderWatch.follow();
    } catch (const AlreadyRunning&) {
        stop(m_options.whenReplaced ? m_options.whenReplaced : [] {});
    } catch (const std::runtime_error& error) {
        m_options.log.warn("other commands cannot reach this process: " + failureText(error));
    }
}

void LiveModel::stop(std::function<void()> stopped)
{
    m_isStopping = true;
    m_model->stop([this, stopped = std::move(stopped)] {
        m_remoteControl.reset();
        stopped();
    });
}

}  // namespace tidemark
