#pragma once

namespace tidemark {

/// The kernel's interfaces that tell of changes. fanotify says whether a change is this process's own and needs
/// no luck with the user's small number of inotify watches; inotify works on more file systems.
enum class WatchBackend { fanotify, inotify };

}  // namespace tidemark
