#pragma once

#include "Debouncer.h"
#include "FileURL.h"
#include "FolderWatcherOptions.h"
#include "SerialQueue.h"
#include "WatchStatus.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tidemark {

class WatchReader;

/// Says that something changed in a set of folders, at any depth, some time after the last change of a
/// burst.
///
/// Changes that other programs make while the watcher is started count; those of this process do not.
/// They are delivered on the watcher's serial queue, collected for up to half a second, and one call of
/// `onChange` on that queue follows when no more was delivered for the debounce interval. Folders may be
/// missing, deleted, made again, renamed or reached through links: each is watched whenever its path
/// leads to a folder, and its coming and going are changes. When the kernel loses events, that counts as
/// one change.
///
/// What cannot be known: writes through memory maps, and what other machines do on a network file system.
/// While the folders below are first looked up, right after `start`, a folder there in which entries came
/// or went meanwhile counts as changed whoever did it, and what is only written to may be missed.
///
/// `start`, `stop` and destruction may not overlap each other; everything else is safe from any thread.
class FolderWatcher {
public:
    /// Does not start watching. `debounce` is the quiet time before `onChange`, which runs on the watcher's
    /// queue and must not throw. Throws system_error if no thread can be started.
    FolderWatcher(std::vector<FileURL> folders, Seconds debounce, std::function<void()> onChange,
        FolderWatcherOptions options = {});

    /// Stops.
    ~FolderWatcher();

    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;

    /// Begins to watch, from now on. Does nothing if it is started, if there are no folders, or if the
    /// system has no means left; it stays stopped then.
    void start();

    /// Ends watching and forgets a change that was not told yet. `onChange` does not run any more once this has
    /// returned: if it is running, that is waited for, unless it is `onChange` itself that stops its watcher.
    void stop();

    bool isStarted() const;

    /// How far each folder is watched, in order; empty while stopped.
    std::vector<WatchStatus> status() const;

    /// Waits until every change that was made before was delivered, and the folders below were looked up. The
    /// quiet time begins then. Does nothing while stopped; not for use on the watcher's queue.
    void settle();

private:
    struct Session;

    static void delivered(const std::weak_ptr<Session>& session);
    static void reached(const std::weak_ptr<Session>& session, WatchBackend limit);
    std::shared_ptr<WatchReader> currentReader() const;

    const std::vector<FileURL> m_folders;
    const std::function<void()> m_onChange;
    const FolderWatcherOptions m_options;
    SteadyTime m_steadyTime;
    SerialQueue m_queue;
    Debouncer m_debouncer;

    mutable std::mutex m_mutex;  ///< Guards what follows.
    std::shared_ptr<Session> m_session;  ///< Present exactly while started, like the reader.
    std::shared_ptr<WatchReader> m_reader;
};

}  // namespace tidemark
