#pragma once

#include "Date.h"
#include "WatchBackend.h"

#include <cstddef>
#include <functional>
#include <optional>

namespace tidemark {

class OwnChangeLog;
class TimeSource;

/// What a folder watcher may be told beyond its folders. What is referred to must outlive it.
struct FolderWatcherOptions {
    /// Use only this interface; by default fanotify, and inotify where that does not work.
    std::optional<WatchBackend> backend = {};

    /// For how long changes that follow each other are collected before they are delivered.
    Seconds coalescing{0.5};

    /// How many folders below the watched ones may be watched, in place of a share of what the system grants
    /// the user.
    std::optional<std::size_t> watchLimit = {};

    /// Knows this process's changes, for interfaces that do not; without it they count as foreign there.
    OwnChangeLog* ownChanges = nullptr;

    /// The clock of the quiet time; null for the system's.
    TimeSource* time = nullptr;

    /// Called on the watcher's queue when there is no room for more watches, once for each interface.
    std::function<void(WatchBackend)> onLimitReached = {};

    /// Called on the reader's thread before it looks at the kernel's queues: a place to hold it.
    std::function<void()> beforeReading = {};
};

}  // namespace tidemark
