#pragma once

#include "ActivityItem.h"
#include "Alarm.h"
#include "FolderChooser.h"
#include "FolderWatcher.h"
#include "FollowUp.h"
#include "MainQueue.h"
#include "SerialQueue.h"
#include "SweepOutcome.h"
#include "SystemLog.h"
#include "UndoOutcome.h"
#include "UpdateFlow.h"
#include "WatchedFolderInfo.h"
#include "WorkFollower.h"
#include "Workspace.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

class LiveModel;
struct LiveOptions;

/// What an interface shows, and everything it can do.
///
/// Lives on the main thread, which needs an event loop. Sweeps and undo run one at a time on the queue `work`,
/// at low priority, in the order in which they were asked for; results are back on the main thread before
/// anything observable changes. Every change of the settings is saved at once. Failures show as `didError` and
/// empty lists, and in the system's log; nothing here throws but where it says so. What another program writes
/// into the settings' file is taken in before the next sweep or change.
class AppModel final : public QObject {
    Q_OBJECT

public:
    /// Collaborators, which outlive the model.
    struct Services {
        FolderChooser& folderChooser;
        Alarm& alarm;
        SystemLog& log;
        TimeSource& time;  ///< Of quiet times.
        OwnChangeLog& ownChanges;  ///< Told by the workspace's file manager.
        std::optional<UpdateServices> updates = {};  ///< Nothing: no network and no prompts.
    };

    /// When to look, without being asked by an event, for files that are due.
    enum class Initiative {
        onceOnboarded,  ///< Not before the user has said that sweeping may start.
        always,
    };

    struct Options {
        Initiative initiative = Initiative::onceOnboarded;
        bool looksAtLaunch = true;  ///< Also right when it is made.
        std::optional<WatchBackend> watchBackend = {};  ///< In place of the best one.
    };

    static constexpr int activityLimit = 20;

    /// Begins to watch the configured folders. `workspace` outlives the model. Throws system_error when the
    /// system has no threads left.
    AppModel(Workspace& workspace, const Services& services, const Options& options);

    /// Waits for the file that is being moved.
    ~AppModel() override;

    /// Builds everything for a running application or `tidemarkctl watch`: see LiveModel.
    static std::unique_ptr<LiveModel> live(const LiveOptions& options);

    const Settings& settings() const { return m_settings; }
    const std::vector<WatchedFolderInfo>& watchedFolders() const { return m_watchedFolders; }
    const std::vector<ActivityItem>& activity() const { return m_activity; }  ///< Newest first.
    bool canUndo() const { return m_canUndo; }

    /// Whether the last sweep or the last saving of the settings failed.
    bool didError() const { return m_didError; }

    /// Null while no folder is configured.
    FolderWatcher* watcher() { return m_watcher.get(); }

    /// Why changes in folders that are there are not noticed; nothing when all is well.
    const std::optional<std::string>& watchProblem() const { return m_toldWatchProblem; }

    /// The one line at the top of a menu.
    std::string statusText() const;
    static std::string version();

    /// The newer version that a check has found.
    std::optional<UpdateInfo> availableUpdate() const;
    bool isUpdating() const;  ///< While a newer version is being installed.
    std::optional<UpdateProgress> updateProgress() const;  ///< Of its download.
    bool isCheckingForUpdate() const;  ///< While a check is under way that the user asked for.
    bool canCheckForUpdates() const { return m_updates != nullptr; }

    SweepController& controller() { return m_workspace.controller(); }

    Date now() const { return m_workspace.now(); }

    /// The rules of a folder that is added.
    static std::vector<Rule> defaultRules();

    // What a menu offers.
    void sweepNow();
    void undoLast();  ///< Pauses sweeping first, and leaves it so.
    void togglePause();

    // Changes of the settings.
    std::vector<FileURL> presentFolderPanel();
    void addFolder();
    void removeFolder(const std::string& path);
    void editRule(const std::string& folder, const QUuid& rule, bool isEnabled);
    void editRule(const std::string& folder, const QUuid& rule, int days);  ///< At least 1.
    void setSortsMarkdown(const std::string& folder, bool sorts);
    void setMarkdownSubfolder(const std::string& name);
    void setGracePeriodSeconds(int seconds);  ///< At least 0.
    void finishOnboarding();

    // Updates (UpdateFlow). Without the services nothing happens.
    void checkForUpdate();  ///< Silent, but that it prompts once for each new version.
    void
    checkForUpdatesManually();  ///< Tells the user what came of it. Not while one is at work already.
    void promptForUpdate();  ///< Asks whether to install the available update, if there is one.
    void installUpdate();  ///< The available one. Ends the application when all went well.
    void scheduleUpdateChecks();  ///< From now on every six hours.

    /// Brings everything that is shown up to date with settings, journal and folders. A journal that has
    /// changed is read on `work`, since it may be large; what it says shows a moment later.
    void refresh();

    // The same for somebody who wants to know what came of it. Callbacks come on the main thread, and not at
    // all when the model ends before.
    struct SweepRequest {
        std::optional<Date> now = {};  ///< Stands in for the present.
        std::function<void(const FileURL&)> willScan = {};
        std::function<void(std::size_t index, std::size_t count)> willPerform = {};
        std::function<void(const SweepOutcome&)> done = {};
    };
    void sweep(SweepRequest request);

    /// Unlike undoLast it pauses sweeping only when there is a sweep to undo.
    void undo(std::optional<Date> now, std::function<void(const UndoOutcome&)> done);

    /// Changes the settings by `change`, then shows what they are. Rethrows what it throws; a failure to save
    /// them sets `didError`.
    void change(const std::function<void(Workspace&)>& change);

    /// Throws CommandFailure when the settings' file cannot be read, so that others are in use.
    void requireReadableSettings();

    /// Calls `idle` when what was asked for so far has been done.
    void whenIdle(std::function<void()> idle);

    /// Ends a sweep or an undo after the file it is at, drops what was asked for since, and calls `stopped`
    /// when all is quiet. Nothing is swept any more.
    void stop(std::function<void()> stopped);

Q_SIGNALS:
    void settingsChanged();
    void watchedFoldersChanged();
    void activityChanged();
    void canUndoChanged();
    void didErrorChanged();
    void watcherChanged();
    void availableUpdateChanged();
    void isUpdatingChanged();
    void updateProgressChanged();
    void isCheckingForUpdateChanged();

    /// What happens, as it happens.
    void performed(const tidemark::JournalEntry& entry);
    void restored(const tidemark::JournalEntry& entry, const tidemark::FileURL& place);
    void swept(const tidemark::SweepOutcome& outcome);
    void undone(const tidemark::UndoOutcome& outcome);

    /// Something that is no failure of a sweep went wrong; it is in the system's log, too.
    void warned(const std::string& line);

private:
    using Id = std::uint64_t;

    template <typename Value>
    void assign(Value& member, Value value, void (AppModel::*changed)());

    void post(MainQueue::Work work);
    void submit(std::function<void()> work);
    WorkFollower::Post poster();

    void edit(const std::function<void(Settings&)>& change);
    void editFolder(const std::string& path, const std::function<void(WatchedFolder&)>& change);
    void editRuleWith(
        const std::string& folder, const QUuid& rule, const std::function<void(Rule&)>& change);
    void save(const std::function<void()>& change);
    void settingsMayHaveChanged();
    void takeInOtherChanges();

    void refreshFolders();
    void refreshJournal();
    void showJournal(std::vector<ActivityItem> activity, bool canUndo);

    void startWatching();
    void somethingChanged();
    std::unique_ptr<FolderWatcher> startedWatcher(std::vector<FileURL> folders);
    void tellWatchProblem();
    void warn(const std::string& line);

    void runSweep(const Settings& settings, WorkFollower& follower, std::optional<Date> now, Id id);
    void finishSweep(const SweepOutcome& outcome, std::optional<Date> comingOfAge, Id id);
    void logFailure(const std::optional<std::string>& failure);
    void beginUndo(const UndoOutcome& outcome, std::optional<Date> now, Id id);
    void pauseAndUndo(std::optional<Date> now, Id id);
    void submitUndo(std::optional<Date> now, bool didPause, Id id);
    void finishUndo(const UndoOutcome& outcome, Id id);

    bool showsInitiative() const;
    void planNextSweep(Seconds rest);
    void finishPlan(std::optional<Date> due, Date earliest, Id plan);
    void setAlarm();
    void alarmRang();

    void startUpdates();

    Workspace& m_workspace;
    const Services m_services;
    const Options m_options;

    Settings m_settings;
    std::vector<WatchedFolderInfo> m_watchedFolders;
    std::vector<ActivityItem> m_activity;
    bool m_canUndo = false;
    bool m_didError = false;
    std::unique_ptr<UpdateFlow> m_updates;  ///< Null without the services.

    FollowUp m_followUp;
    std::optional<Settings> m_queuedSweep;  ///< The settings of the last sweep, until it begins.
    std::optional<std::string> m_loggedFailure;
    std::optional<std::string> m_toldSettingsProblem;
    std::optional<std::string> m_toldWatchProblem;
    int m_undosBeingChecked = 0;
    std::vector<SweepRequest> m_heldSweeps;  ///< Asked for after such an undo.
    Id m_lastId = 0;
    std::map<Id, SweepRequest> m_sweepRequests;
    std::map<Id, std::function<void(const UndoOutcome&)>> m_undoRequests;

    std::atomic<bool> m_isStopping = false;  ///< Read by the work, too, like the next.
    std::atomic<Id> m_lastPlan = 0;  ///< An earlier one is not worth its while any more.
    MainQueue m_mainQueue;
    SerialQueue m_work;
    std::unique_ptr<FolderWatcher> m_watcher;
};

}  // namespace tidemark
