#pragma once

#include "AppModel.h"
#include "Clock.h"
#include "LinuxFileManager.h"
#include "OwnChangeLog.h"
#include "RemoteControl.h"
#include "SupportFolderWatch.h"
#include "SupportLock.h"
#include "TimeSource.h"
#include "WallClockAlarm.h"

#include <functional>
#include <optional>

namespace tidemark {

/// How a model is brought to life. What is referred to outlives it.
struct LiveOptions {
    /// In place of the user's own, which is replaced by one in the temporary directory if it cannot be made.
    std::optional<FileURL> supportFolder = {};
    FolderChooser& folderChooser;
    SystemLog& log;
    AppModel::Initiative initiative = AppModel::Initiative::onceOnboarded;
    bool requiresReadableSettings =
        false;  ///< Else unreadable settings are replaced by the defaults.
    std::optional<WatchBackend> watchBackend = {};
    std::optional<UpdateServices> updates = {};  ///< Nothing: no network and no prompts.

    /// Called again and again while another command is waited for; what it throws ends the waiting.
    std::function<void()> whileWaiting = {};

    /// Called when the support folder or its lock was removed by hand and another process has made them
    /// anew: that one keeps the folders tidy now. Nothing is changed here any more, and the process
    /// should end.
    std::function<void()> whenReplaced = {};
};

/// A model on the real disk and clock, with everything it needs: the only one of its support folder.
///
/// It holds the folder's lock and serves the commands of other processes; should somebody remove the
/// folder, the lock or the socket meanwhile, it makes them again. For the main thread, which needs an
/// event loop.
class LiveModel {
public:
    /// Watches the standard folders if none is configured. Throws AlreadyRunning when another process serves
    /// the support folder (a short command is waited for), CommandFailure when the settings cannot be read but
    /// have to be, filesystem_error and system_error when the folder cannot be used or served.
    explicit LiveModel(const LiveOptions& options);
    ~LiveModel();

    LiveModel(const LiveModel&) = delete;
    LiveModel& operator=(const LiveModel&) = delete;

    AppModel& model() { return *m_model; }
    const FileURL& supportFolder() const { return m_supportFolder; }

    /// Whether no folder was configured, and the standard folders were taken.
    bool isFirstStart() const { return m_isFirstStart; }

    /// What to do when somebody starts the application again. Without it they are told that there is no window.
    void onBringForward(RemoteControl::BringForward bringForward);

    /// AppModel::stop; commands of other processes get their answers before and are not served any more after.
    void stop(std::function<void()> stopped);

private:
    void repair();
    void serve();

    const LiveOptions m_options;
    FileURL m_supportFolder;
    SupportLock m_lock;
    OwnChangeLog m_ownChanges;
    LinuxFileManager m_fileManager;
    SystemClock m_clock;
    SteadyTime m_time;
    WallClockAlarm m_alarm;
    Workspace m_workspace;
    bool m_isFirstStart;
    bool m_isStopping = false;
    std::optional<AppModel> m_model;
    RemoteControl::BringForward m_bringForward;
    std::optional<RemoteControl> m_remoteControl;
    SupportFolderWatch m_folderWatch;
};

}  // namespace tidemark
