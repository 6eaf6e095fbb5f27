#pragma once

#include "Coalescer.h"
#include "DrainPace.h"
#include "FileURL.h"
#include "FolderWatcherOptions.h"
#include "MountTable.h"
#include "RootPaths.h"
#include "WakeUp.h"
#include "WatchStatus.h"
#include "WatchedTrees.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace tidemark {

/// The thread that reads the kernel's event queues and says when something changed.
///
/// It sleeps without a time-out while nothing happens. It owns everything that is watched; other threads only
/// ask for its status and wait for it.
class WatchReader {
public:
    /// Both are called on the reader's thread and must not block.
    struct Callbacks {
        std::function<void()> onChange;
        std::function<void(WatchBackend)> onLimitReached;
    };

    /// Every change of the folders' direct entries after it has returned is noticed; what lies deeper is looked
    /// up by the thread. Throws system_error if there is no descriptor or no thread to be had.
    WatchReader(const std::vector<FileURL>& folders, const FolderWatcherOptions& options,
        Callbacks callbacks);

    /// Stops.
    ~WatchReader();

    WatchReader(const WatchReader&) = delete;
    WatchReader& operator=(const WatchReader&) = delete;

    /// Ends the thread: nothing is called any more once it has returned. Not for the reader's thread.
    void stop();

    /// One for each folder, in order. Safe from any thread.
    std::vector<WatchStatus> status() const;

    /// Waits until everything that happened before was taken in, the folders below were looked up, and a change
    /// was delivered ahead of its time, or until the reader is stopped. Safe from any thread but the reader's.
    void settle();

private:
    void run();
    bool isStopping() const;
    void waitForEvents();
    bool takeInPaths();
    void deliver();
    void publish();
    void reportLimits();
    void acknowledge(std::uint64_t request);
    void pause(DrainPace::Duration duration);
    std::uint64_t currentRequest() const;

    Callbacks m_callbacks;
    std::function<void()> m_beforeReading;
    WakeUp m_wakeUp;
    MountTable m_mounts;
    RootPaths m_paths;
    WatchedTrees m_trees;
    Coalescer m_coalescer;
    DrainPace m_pace;
    bool m_isQuiet = false;  ///< All that was there to do is done.
    std::set<WatchBackend> m_reportedLimits;

    mutable std::mutex m_mutex;  ///< Guards what follows.
    std::condition_variable m_settled;
    std::vector<WatchStatus> m_status;
    std::uint64_t m_requested = 0;
    std::uint64_t m_acknowledged = 0;
    bool m_isStopping = false;

    std::thread m_thread;
};

}  // namespace tidemark
