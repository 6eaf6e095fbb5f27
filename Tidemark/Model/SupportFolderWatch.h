#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <vector>

namespace tidemark {

/// Notices that the support folder, its lock or its socket is removed or renamed while they are in use.
///
/// It looks at these files themselves (inotify), so that nothing else that happens in the folder wakes
/// it. It may tell of a change that means nothing, and not of one to the folders above. Where the system
/// has no inotify left it tells nothing. For the main thread.
class SupportFolderWatch {
public:
    SupportFolderWatch(FileURL supportFolder, std::function<void()> onChange);

    /// Looks at the files that stand there now.
    void follow();

private:
    void forget();
    void somethingHappened();

    const FileURL m_supportFolder;
    const std::function<void()> m_onChange;
    FileDescriptor m_inotify;
    std::vector<int> m_watches;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace tidemark
