#include "AppModel.h"

#include "CommandFailure.h"
#include "FailureText.h"
#include "FolderChanges.h"
#include "LiveModel.h"
#include "NewFolder.h"
#include "StatusText.h"
#include "Text.h"

#include <malloc.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace tidemark {

namespace {

constexpr const char* workLabel = "io.tidemark.sweep";
constexpr Seconds quietTime{1.0};

/// How long settings have to rest after a change before files are swept by them without an event: a number
/// that is being typed passes through others.
constexpr Seconds restAfterEdit{60};

constexpr Seconds pauseBeforeWatchingAgain{300};

std::vector<std::string> paths(const Settings& settings)
{
    std::vector<std::string> result;
    for (const WatchedFolder& folder : settings.folders)
        result.push_back(folder.path);
    return result;
}

bool canBeListed(const std::string& path, FileManager& fileManager)
{
    try {
        fileManager.requireListable(FileURL::directory(path));
        return true;
    } catch (const std::exception&) {
        return false;  // the row says so
    }
}

/// Left to itself, glibc keeps what a thread has freed for that thread's next use: megabytes after a long
/// journal or a full folder, for as long as nothing is to be done.
void giveBackFreedMemory()
{
    ::malloc_trim(0);
}

bool isWatched(const std::string& path, const Settings& settings)
{
    return std::ranges::any_of(
        settings.folders, [&](const WatchedFolder& folder) { return folder.path == path; });
}

}  // namespace

AppModel::AppModel(Workspace& workspace, const Services& services, const Options& options)
    : m_workspace(workspace)
    , m_services(services)
    , m_options(options)
    , m_settings(workspace.controller().settings())
    , m_work(workLabel, services.time, SerialQueue::Priority::low)
{
    m_services.alarm.onRing([this] { alarmRang(); });
    refresh();
    startWatching();
    if (m_options.looksAtLaunch)
        planNextSweep(Seconds{0});
    startUpdates();
}

AppModel::~AppModel()
{
    m_updates.reset();
    m_services.alarm.cancel();
    m_services.alarm.onRing({});
    m_watcher.reset();
    m_isStopping = true;
}

std::unique_ptr<LiveModel> AppModel::live(const LiveOptions& options)
{
    return std::make_unique<LiveModel>(options);
}

std::string AppModel::statusText() const
{
    return tidemark::statusText(m_settings);
}

std::vector<Rule> AppModel::defaultRules()
{
    return defaultRulesForNewFolders();
}

/// Shows a new value, if it is one.
template <typename Value>
void AppModel::assign(Value& member, Value value, void (AppModel::*changed)())
{
    if (member == value)
        return;
    member = std::move(value);
    Q_EMIT(this->*changed)();
}

/// Runs `work` on the main thread, after what was posted before. Safe from any thread.
void AppModel::post(MainQueue::Work work)
{
    m_mainQueue.post(std::move(work));
}

/// Runs `work` on the queue, unless everything ends before.
void AppModel::submit(std::function<void()> work)
{
    m_work.async([this, work = std::move(work)] {
        if (m_isStopping)
            return;
        work();
        // Posted after the work's result, so that the main thread has let go of that as well by then.
        post([this] { m_work.async(giveBackFreedMemory); });
    });
}

WorkFollower::Post AppModel::poster()
{
    return [this](std::function<void()> work) { post(std::move(work)); };
}

// Settings

std::vector<FileURL> AppModel::presentFolderPanel()
{
    return m_services.folderChooser.chooseFolders();
}

void AppModel::addFolder()
{
    const std::vector<FileURL> chosen = presentFolderPanel();
    if (chosen.empty())
        return;
    edit([&](Settings& settings) {
        for (const FileURL& folder : chosen) {
            const std::string& path = folder.path();
            if (isValidUTF8(path) && !isWatched(path, settings)
                && !isSupportFolder(path, m_workspace))
                settings.folders.push_back(newWatchedFolder(path));
        }
    });
}

void AppModel::removeFolder(const std::string& path)
{
    edit([&](Settings& settings) {
        std::erase_if(
            settings.folders, [&](const WatchedFolder& folder) { return folder.path == path; });
    });
}

void AppModel::editRule(const std::string& folder, const QUuid& rule, bool isEnabled)
{
    editRuleWith(folder, rule, [=](Rule& edited) { edited.isEnabled = isEnabled; });
}

void AppModel::editRule(const std::string& folder, const QUuid& rule, int days)
{
    const Seconds age{std::max(days, 1) * secondsPerDay};
    editRuleWith(folder, rule, [=](Rule& edited) { edited.match.minAge = age; });
}

void AppModel::setSortsMarkdown(const std::string& folder, bool sorts)
{
    editFolder(folder, [=](WatchedFolder& edited) { edited.sortsMarkdown = sorts; });
}

void AppModel::setMarkdownSubfolder(const std::string& name)
{
    edit([&](Settings& settings) { settings.markdownSubfolder = name; });
}

void AppModel::setGracePeriodSeconds(int seconds)
{
    edit([=](Settings& settings) { settings.gracePeriod = Seconds(std::max(seconds, 0)); });
}

void AppModel::finishOnboarding()
{
    edit([](Settings& settings) { settings.hasOnboarded = true; });
}

void AppModel::editRuleWith(
    const std::string& folder, const QUuid& rule, const std::function<void(Rule&)>& change)
{
    editFolder(folder, [&](WatchedFolder& edited) {
        for (Rule& each : edited.rules) {
            if (each.id == rule)
                change(each);
        }
    });
}

void AppModel::editFolder(
    const std::string& path, const std::function<void(WatchedFolder&)>& change)
{
    edit([&](Settings& settings) {
        for (WatchedFolder& folder : settings.folders) {
            if (folder.path == path)
                change(folder);
        }
    });
}

void AppModel::edit(const std::function<void(Settings&)>& change)
{
    save([&] {
        Settings settings = controller().settings();
        change(settings);
        controller().update(std::move(settings));
    });
}

void AppModel::togglePause()
{
    save([this] { controller().togglePause(); });
}

/// Performs a change that ends with saving the settings.
void AppModel::save(const std::function<void()>& change)
{
    takeInOtherChanges();
    bool hasFailed = false;
    try {
        change();
    } catch (const std::exception&) {
        hasFailed = true;
    }
    assign(m_didError, hasFailed, &AppModel::didErrorChanged);
    settingsMayHaveChanged();
}

void AppModel::change(const std::function<void(Workspace&)>& change)
{
    takeInOtherChanges();
    std::exception_ptr failure;
    bool didTryToSave = true;
    try {
        change(m_workspace);
    } catch (const CommandFailure&) {
        failure = std::current_exception();
        didTryToSave = false;
    } catch (const std::exception&) {
        failure = std::current_exception();
    }
    if (didTryToSave)
        assign(m_didError, failure != nullptr, &AppModel::didErrorChanged);
    settingsMayHaveChanged();
    if (failure)
        std::rethrow_exception(failure);
}

void AppModel::requireReadableSettings()
{
    takeInOtherChanges();
    m_workspace.requireReadableSettings();
}

void AppModel::takeInOtherChanges()
{
    if (controller().takeInOtherChanges())
        settingsMayHaveChanged();
    auto problem = m_workspace.settingsProblem();
    if (problem && problem != m_toldSettingsProblem)
        warn("the settings cannot be read, and stay as they were: " + *problem);
    m_toldSettingsProblem = std::move(problem);
}

/// Acts upon whatever is new in the controller's settings.
void AppModel::settingsMayHaveChanged()
{
    const Settings before = m_settings;
    refresh();
    if (m_settings == before)
        return;
    if (paths(m_settings) != paths(before))
        startWatching();
    planNextSweep(before.isPaused ? Seconds{0} : restAfterEdit);
}

// What is shown

void AppModel::refresh()
{
    assign(m_settings, controller().settings(), &AppModel::settingsChanged);
    refreshJournal();
    refreshFolders();
}

void AppModel::refreshFolders()
{
    std::vector<WatchedFolderInfo> folders;
    for (const WatchedFolder& folder : m_settings.folders)
        folders.push_back({folder, canBeListed(folder.path, m_workspace.fileManager())});
    assign(m_watchedFolders, std::move(folders), &AppModel::watchedFoldersChanged);
}

/// What the journal says, read anew if its file has changed.
static std::vector<ActivityItem> recentActivity(SweepController& controller)
{
    try {
        return controller.recentActivity(AppModel::activityLimit);
    } catch (const std::exception&) {
        return {};
    }
}

static bool hasSweep(SweepController& controller)
{
    try {
        return controller.canUndo();
    } catch (const std::exception&) {
        return false;
    }
}

void AppModel::refreshJournal()
{
    if (controller().hasCurrentJournal())
        return showJournal(recentActivity(controller()), hasSweep(controller()));
    submit([this] {
        auto activity = recentActivity(controller());
        const bool canUndo = hasSweep(controller());
        post([this, activity = std::move(activity), canUndo] { showJournal(activity, canUndo); });
    });
}

void AppModel::showJournal(std::vector<ActivityItem> activity, bool canUndo)
{
    assign(m_activity, std::move(activity), &AppModel::activityChanged);
    assign(m_canUndo, canUndo, &AppModel::canUndoChanged);
}

// Watching

void AppModel::startWatching()
{
    m_watcher.reset();
    std::vector<FileURL> folders;
    for (const std::string& path : paths(m_settings)) {
        // A file edited by hand may hold anything; a relative path would mean one from the root.
        if (path.starts_with('/'))
            folders.push_back(FileURL::directory(path));
    }
    if (!folders.empty())
        m_watcher = startedWatcher(std::move(folders));
    tellWatchProblem();
    Q_EMIT watcherChanged();
}

/// Null when the system has no threads left.
std::unique_ptr<FolderWatcher> AppModel::startedWatcher(std::vector<FileURL> folders)
{
    // Neither waits for the main thread, which may be waiting for the watcher to stop.
    const auto onChange = [this] { post([this] { somethingChanged(); }); };
    const auto onLimit = [this](WatchBackend) {
        post([this] {
            warn("there are more folders than may be watched; changes in some are not noticed (see "
                 "fs.fanotify.max_user_marks and fs.inotify.max_user_watches)");
        });
    };
    try {
        auto watcher = std::make_unique<FolderWatcher>(std::move(folders), quietTime, onChange,
            FolderWatcherOptions{.backend = m_options.watchBackend,
                .ownChanges = &m_services.ownChanges,
                .time = &m_services.time,
                .onLimitReached = onLimit});
        watcher->start();
        return watcher;
    } catch (const std::system_error&) {
        return nullptr;
    }
}

/// Why some folder that is there is not watched; nothing when all is well.
static std::optional<std::string> problemOf(
    const FolderWatcher* watcher, const std::vector<WatchedFolderInfo>& folders)
{
    if (watcher == nullptr || !watcher->isStarted())
        return "the system has no means left";
    for (const WatchStatus& status : watcher->status()) {
        const bool isThere = std::ranges::any_of(folders, [&](const WatchedFolderInfo& info) {
            return info.isGranted && info.folder.path == status.folder.path();
        });
        if (isThere && status.coverage == WatchStatus::Coverage::none)
            return status.folder.path() + ": " + status.reason.message();
    }
    return std::nullopt;
}

/// Tells once that folders are not watched. The alarm has them tried again.
void AppModel::tellWatchProblem()
{
    std::optional<std::string> problem;
    if (!m_settings.folders.empty())
        problem = problemOf(m_watcher.get(), m_watchedFolders);
    if (problem && problem != m_toldWatchProblem)
        warn("folders cannot be watched, so changes in them are not noticed: " + *problem);
    m_toldWatchProblem = std::move(problem);
    setAlarm();
}

void AppModel::warn(const std::string& line)
{
    m_services.log.warn(line);
    Q_EMIT warned(line);
}

void AppModel::somethingChanged()
{
    // A sweep that has not begun will see this change, too.
    if (!m_isStopping && m_queuedSweep != m_settings)
        sweepNow();
}

// Sweeping

void AppModel::sweepNow()
{
    sweep({});
}

void AppModel::sweep(SweepRequest request)
{
    if (m_undosBeingChecked > 0)
        return m_heldSweeps.push_back(std::move(request));
    takeInOtherChanges();
    const Id id = ++m_lastId;
    const std::optional<Date> now = request.now;
    // What the request holds stays on the main thread.
    WorkFollower::Listener listener{
        .didPerform = [this](const JournalEntry& entry) { Q_EMIT performed(entry); }};
    if (request.willScan) {
        listener.willScan = [this, id](
                                const FileURL& folder) { m_sweepRequests.at(id).willScan(folder); };
    }
    if (request.willPerform) {
        listener.willPerform = [this, id](std::size_t index, std::size_t count) {
            m_sweepRequests.at(id).willPerform(index, count);
        };
    }
    m_sweepRequests.emplace(id, std::move(request));
    m_queuedSweep = m_settings;
    submit([this, id, now, settings = m_settings, listener = std::move(listener)] {
        post([this] { m_queuedSweep.reset(); });
        WorkFollower follower{listener, poster(), m_isStopping};
        runSweep(settings, follower, now, id);
    });
}

/// On the queue.
void AppModel::runSweep(
    const Settings& settings, WorkFollower& follower, std::optional<Date> now, Id id)
{
    SweepOutcome outcome;
    try {
        outcome.report =
            performSweep(m_workspace, settings, now.value_or(m_workspace.now()), follower);
        outcome.failure = outcome.report->summaryOfFailures();
    } catch (const std::exception& error) {
        outcome.failure = withValidUTF8(failureText(error));
    }
    // Reads the journal here, so that the main thread need not.
    static_cast<void>(hasSweep(controller()));
    post([this, outcome = std::move(outcome), comingOfAge = follower.comingOfAge(), id] {
        finishSweep(outcome, comingOfAge, id);
    });
}

void AppModel::finishSweep(const SweepOutcome& outcome, std::optional<Date> comingOfAge, Id id)
{
    const SweepRequest request = std::move(m_sweepRequests.extract(id).mapped());
    assign(m_didError, outcome.hasFailed(), &AppModel::didErrorChanged);
    refresh();
    if (outcome.hasFailed())
        m_followUp.didFail(m_workspace.now());
    else if (!outcome.report->wasPaused && !request.now)
        m_followUp.didSweep(comingOfAge, m_workspace.now());
    setAlarm();
    if (request.now)
        planNextSweep(Seconds{0});  // what came of age at another time tells nothing of the present
    logFailure(outcome.failure);
    Q_EMIT swept(outcome);
    if (request.done)
        request.done(outcome);
}

/// One that lasts is logged once.
void AppModel::logFailure(const std::optional<std::string>& failure)
{
    if (failure && failure != m_loggedFailure)
        m_services.log.warn("the sweep failed: " + *failure);
    m_loggedFailure = failure;
}

// Undo

void AppModel::undoLast()
{
    bool didPause = false;
    if (!m_settings.isPaused)
        save([&] { didPause = pauseBeforeUndo(m_workspace); });
    submitUndo({}, didPause, ++m_lastId);
}

void AppModel::undo(std::optional<Date> now, std::function<void(const UndoOutcome&)> done)
{
    const Id id = ++m_lastId;
    m_undoRequests.emplace(id, std::move(done));
    ++m_undosBeingChecked;
    submit([this, id, now] {
        UndoOutcome outcome;
        try {
            if (!hasSweepToUndo(m_workspace))
                outcome.report = UndoReport{};
        } catch (const std::exception& error) {
            outcome.failure = withValidUTF8(failureText(error));
        }
        post([this, id, now, outcome = std::move(outcome)] { beginUndo(outcome, now, id); });
    });
}

/// Whether there is something to undo has been found out: `outcome` holds why not.
void AppModel::beginUndo(const UndoOutcome& outcome, std::optional<Date> now, Id id)
{
    if (outcome.report || outcome.failure)
        finishUndo(outcome, id);
    else
        pauseAndUndo(now, id);
    if (--m_undosBeingChecked > 0)
        return;
    for (SweepRequest& request : std::exchange(m_heldSweeps, {}))
        sweep(std::move(request));
}

void AppModel::pauseAndUndo(std::optional<Date> now, Id id)
{
    bool didPause = false;
    try {
        change([&](Workspace& workspace) { didPause = pauseBeforeUndo(workspace); });
    } catch (const std::exception& error) {
        return finishUndo({.failure = withValidUTF8(failureText(error))}, id);
    }
    submitUndo(now, didPause, id);
}

void AppModel::submitUndo(std::optional<Date> now, bool didPause, Id id)
{
    submit([this, now, didPause, id] {
        WorkFollower follower{
            {.didRestore = [this](const JournalEntry& entry,
                               const FileURL& place) { Q_EMIT restored(entry, place); }},
            poster(), m_isStopping};
        UndoOutcome outcome;
        outcome.report = takeBackLastSweep(m_workspace, now.value_or(m_workspace.now()), follower);
        outcome.report->didPause = didPause;
        static_cast<void>(hasSweep(controller()));  // reads the journal here, like a sweep
        post([this, outcome = std::move(outcome), id] { finishUndo(outcome, id); });
    });
}

void AppModel::finishUndo(const UndoOutcome& outcome, Id id)
{
    refresh();
    Q_EMIT undone(outcome);
    if (const auto request = m_undoRequests.extract(id); request && request.mapped())
        request.mapped()(outcome);
}

// Updates

void AppModel::startUpdates()
{
    if (!m_services.updates)
        return;
    UpdateServices services = *m_services.updates;
    // Nobody asked for an end: a sweep is not cut short, since nothing would take up the rest of it afterwards.
    services.quit = [this, quit = services.quit] { whenIdle(quit); };
    m_updates = std::make_unique<UpdateFlow>(
        services, version(), [this] { return m_settings.hasOnboarded; }, m_services.log);
    const auto forward = [this](void (UpdateFlow::*from)(), void (AppModel::*to)()) {
        QObject::connect(m_updates.get(), from, this, to);
    };
    forward(&UpdateFlow::availableUpdateChanged, &AppModel::availableUpdateChanged);
    forward(&UpdateFlow::isUpdatingChanged, &AppModel::isUpdatingChanged);
    forward(&UpdateFlow::isCheckingForUpdateChanged, &AppModel::isCheckingForUpdateChanged);
    forward(&UpdateFlow::progressChanged, &AppModel::updateProgressChanged);
    // Whoever made the model gets to show it first.
    post([this] { checkForUpdate(); });
    post([this] { scheduleUpdateChecks(); });
}

std::optional<UpdateInfo> AppModel::availableUpdate() const
{
    return m_updates ? m_updates->availableUpdate() : std::nullopt;
}

bool AppModel::isUpdating() const
{
    return m_updates && m_updates->isUpdating();
}

std::optional<UpdateProgress> AppModel::updateProgress() const
{
    return m_updates ? m_updates->progress() : std::nullopt;
}

bool AppModel::isCheckingForUpdate() const
{
    return m_updates && m_updates->isCheckingForUpdate();
}

void AppModel::checkForUpdate()
{
    if (m_updates)
        m_updates->checkForUpdate();
}

void AppModel::checkForUpdatesManually()
{
    if (m_updates)
        m_updates->checkForUpdatesManually();
}

void AppModel::promptForUpdate()
{
    if (m_updates)
        m_updates->promptForUpdate();
}

void AppModel::installUpdate()
{
    if (m_updates)
        m_updates->installUpdate();
}

void AppModel::scheduleUpdateChecks()
{
    if (m_updates)
        m_updates->scheduleUpdateChecks();
}

// Sweeping without being asked by an event

bool AppModel::showsInitiative() const
{
    return !m_settings.isPaused && !m_isStopping
        && (m_options.initiative == Initiative::always || m_settings.hasOnboarded);
}

/// Finds out when the next sweep is due, which then begins `rest` from now at the earliest.
void AppModel::planNextSweep(Seconds rest)
{
    const Id plan = ++m_lastPlan;
    if (!showsInitiative())
        return setAlarm();
    const Date earliest = m_workspace.now() + rest;
    submit([this, plan, earliest, settings = m_settings] {
        if (plan != m_lastPlan)
            return;
        const Date now = m_workspace.now();
        std::optional<Date> due;
        WorkFollower follower{{}, poster(), m_isStopping};
        try {
            due = controller().nextSweepDue(settings, now, &follower);
        } catch (const std::exception&) {
            due = now;  // the sweep fails in the same way and tells why
        }
        post([this, due, earliest, plan] { finishPlan(due, earliest, plan); });
    });
}

void AppModel::finishPlan(std::optional<Date> due, Date earliest, Id plan)
{
    if (plan != m_lastPlan)
        return;
    m_followUp.didPlan(due, earliest);
    setAlarm();
}

void AppModel::setAlarm()
{
    if (m_settings.isPaused || m_isStopping)
        m_followUp.cancel();
    std::optional<Date> due = m_followUp.due();
    if (m_toldWatchProblem && !m_isStopping) {
        const Date another = m_workspace.now() + pauseBeforeWatchingAgain;
        due = std::min(due.value_or(another), another);
    }
    if (due)
        m_services.alarm.set(*due);
    else
        m_services.alarm.cancel();
}

void AppModel::alarmRang()
{
    const bool wasBlind = m_toldWatchProblem.has_value();
    if (wasBlind)
        startWatching();
    // What happened while nothing was noticed is swept now.
    const bool canSeeAgain = wasBlind && !m_toldWatchProblem;
    if (m_followUp.take(m_workspace.now()) || canSeeAgain)
        somethingChanged();
    else
        setAlarm();
}

void AppModel::whenIdle(std::function<void()> idle)
{
    m_work.async([this, idle = std::move(idle)]() mutable { post(std::move(idle)); });
}

void AppModel::stop(std::function<void()> stopped)
{
    m_isStopping = true;
    if (m_updates)
        m_updates->stop();
    setAlarm();
    m_watcher.reset();
    whenIdle(std::move(stopped));
}

}  // namespace tidemark
