#pragma once

#include "FileURL.h"

#include <memory>
#include <optional>

namespace tidemark {

class FileDescriptor;

/// The right to change the files of one support folder, held by at most one process at a time.
///
/// An advisory lock (flock, close-on-exec) on the file "lock" in that folder; the kernel drops it when the
/// process ends, however it ends. Whoever gets it removes what writers that were killed left half written.
class SupportLock {
public:
    /// Waits until the lock is free. The folder is made if it is missing. Throws filesystem_error.
    static SupportLock acquire(const FileURL& supportFolder);

    /// The same without waiting: nothing if another process holds it.
    static std::optional<SupportLock> tryAcquire(const FileURL& supportFolder);

    SupportLock(SupportLock&&) noexcept;
    SupportLock& operator=(SupportLock&&) noexcept;
    ~SupportLock();

private:
    explicit SupportLock(FileDescriptor file);

    std::unique_ptr<FileDescriptor> m_file;
};

}  // namespace tidemark
