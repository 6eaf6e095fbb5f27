#pragma once

#include "FileURL.h"
#include "OwnChanges.h"

#include <memory>
#include <optional>

namespace tidemark {

/// The right to change the files of one support folder, held by at most one process at a time.
///
/// An advisory lock (flock, close-on-exec) on the file "lock" in that folder; the kernel drops it when the
/// process ends, however it ends. Whoever gets it removes what writers that were killed left half written.
class SupportLock {
public:
    /// Waits until the lock is free. The folder is made if it is missing. Throws filesystem_error.
    /// `ownChanges` is told of what taking the lock, and giving it back, changes in that folder.
    static SupportLock acquire(const FileURL& supportFolder, OwnChanges ownChanges = {});

    /// The same without waiting: nothing if another process holds it.
    static std::optional<SupportLock> tryAcquire(
        const FileURL& supportFolder, OwnChanges ownChanges = {});

    SupportLock(SupportLock&&) noexcept;
    SupportLock& operator=(SupportLock&&) noexcept;
    ~SupportLock();

    /// False once somebody has removed or replaced the folder or its lock file: then it excludes nobody
    /// any more.
    bool isStillThere() const;

private:
    enum class Waiting { untilFree, none };
    class File;

    explicit SupportLock(std::unique_ptr<File> file);

    static std::unique_ptr<File> lock(
        const FileURL& folder, OwnChanges ownChanges, Waiting waiting);

    std::unique_ptr<File> m_file;
};

}  // namespace tidemark
