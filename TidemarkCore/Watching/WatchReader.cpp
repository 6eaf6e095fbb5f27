#include "WatchReader.h"

#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace tidemark {

namespace {

using Clock = std::chrono::steady_clock;

/// So many directories are read before the event queues get their turn.
constexpr std::size_t directoriesAtATime = 64;

/// Reading whole trees at once would take the processor from a program that is just starting, and from the panel
/// that its icon goes to. Nothing is missed: the kernel collects events from the start on.
constexpr DrainPace::Duration pauseAtTheStart{50};

int millisecondsUntil(Clock::time_point due)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

WatchGroups::Options groupOptions(const FolderWatcherOptions& options)
{
    return {options.backend, options.watchLimit, options.ownChanges};
}

}  // namespace

WatchReader::WatchReader(
    const std::vector<FileURL>& folders, const FolderWatcherOptions& options, Callbacks callbacks)
    : m_callbacks(std::move(callbacks))
    , m_beforeReading(options.beforeReading)
    , m_paths(folders)
    , m_trees(folders, groupOptions(options))
    , m_coalescer(std::chrono::duration_cast<Clock::duration>(options.coalescing))
{
    m_trees.follow(m_paths.follow());
    m_status = m_trees.status();
    m_thread = std::thread{[this] { run(); }};
}

WatchReader::~WatchReader()
{
    stop();
}

void WatchReader::stop()
{
    {
        const std::lock_guard lock{m_mutex};
        m_isStopping = true;
        m_settled.notify_all();
    }
    m_wakeUp.signal();
    if (m_thread.joinable())
        m_thread.join();
}

std::vector<WatchStatus> WatchReader::status() const
{
    const std::lock_guard lock{m_mutex};
    return m_status;
}

void WatchReader::settle()
{
    std::unique_lock lock{m_mutex};
    const std::uint64_t request = ++m_requested;
    m_wakeUp.signal();
    m_settled.wait(lock, [&] { return m_acknowledged >= request || m_isStopping; });
}

void WatchReader::run()
{
    ::pthread_setname_np(::pthread_self(), "watcher.reader");
    pause(pauseAtTheStart);
    while (!isStopping()) {
        if (m_beforeReading)
            m_beforeReading();
        const std::uint64_t request = currentRequest();
        const bool werePathsQuiet = takeInPaths();
        const WatchedTrees::Drained drained = m_trees.drain();
        m_trees.scan(directoriesAtATime);
        deliver();
        reportLimits();
        publish();
        m_isQuiet =
            werePathsQuiet && drained.isEmptied && !m_trees.isScanning() && !m_trees.hasLoss();
        if (m_isQuiet) {
            acknowledge(request);
            pause(m_pace.pauseAfter(drained.events));
        }
        waitForEvents();
    }
}

bool WatchReader::isStopping() const
{
    const std::lock_guard lock{m_mutex};
    return m_isStopping;
}

std::uint64_t WatchReader::currentRequest() const
{
    const std::lock_guard lock{m_mutex};
    return m_requested;
}

void WatchReader::waitForEvents()
{
    std::vector<pollfd> polled{{m_wakeUp.descriptor(), POLLIN, 0},
        {m_mounts.descriptor(), POLLPRI, 0}, {m_paths.descriptor(), POLLIN, 0}};
    for (const int descriptor : m_trees.descriptors())
        polled.push_back({descriptor, POLLIN, 0});
    int timeout = -1;
    if (!m_isQuiet)
        timeout = 0;
    else if (m_coalescer.due())
        timeout = millisecondsUntil(*m_coalescer.due());
    const Clock::time_point before = Clock::now();
    ::poll(polled.data(), polled.size(), timeout);
    m_pace.rested(Clock::now() - before);
    if (polled[1].revents != 0)
        m_mounts.noteChange();
    m_wakeUp.clear();
}

/// Whether every path still leads where it did.
bool WatchReader::takeInPaths()
{
    const bool haveMountsChanged = m_mounts.hasChanged();
    const bool haveMoved = m_paths.drain();
    if (!m_trees.hasLoss() && !haveMoved && !haveMountsChanged)
        return true;
    m_trees.follow(m_paths.follow());
    if (haveMountsChanged) {
        for (const std::string& folder : m_mounts.takeChanges())
            m_trees.mountChanged(folder);
    }
    return false;
}

void WatchReader::deliver()
{
    if (m_trees.takeChange())
        m_coalescer.note(Clock::now());
    if (m_coalescer.take(Clock::now()))
        m_callbacks.onChange();
}

void WatchReader::reportLimits()
{
    for (const WatchBackend backend : m_trees.takeLimits()) {
        if (m_reportedLimits.insert(backend).second)
            m_callbacks.onLimitReached(backend);
    }
}

void WatchReader::publish()
{
    if (!m_trees.takeStatusChange())
        return;
    std::vector<WatchStatus> status = m_trees.status();
    const std::lock_guard lock{m_mutex};
    m_status = std::move(status);
}

void WatchReader::acknowledge(std::uint64_t request)
{
    if (m_acknowledged == request)
        return;
    if (m_coalescer.takeEarly(Clock::now()))
        m_callbacks.onChange();
    const std::lock_guard lock{m_mutex};
    m_acknowledged = request;
    m_settled.notify_all();
}

void WatchReader::pause(DrainPace::Duration duration)
{
    pollfd wakeUp{m_wakeUp.descriptor(), POLLIN, 0};
    if (duration > DrainPace::Duration::zero())
        ::poll(&wakeUp, 1, static_cast<int>(duration.count()));
}

}  // namespace tidemark
