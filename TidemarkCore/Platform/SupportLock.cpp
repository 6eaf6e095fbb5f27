#include "SupportLock.h"

#include "AppSupport.h"
#include "AtomicWrite.h"
#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tidemark {

namespace {

constexpr const char* cannotLock = "cannot lock";

void removeLeftovers(const FileURL& folder, OwnChanges ownChanges)
{
    for (const char* name : {"settings.json", "journal.json", "last-failure.json"})
        AtomicWrite::removeLeftovers(folder, name, ownChanges);
}

}  // namespace

/// The open lock file. Closing it gives the lock back, and counts as a change since it is open for writing:
/// network file systems want that for an exclusive lock.
class SupportLock::File {
public:
    File(FileURL url, OwnChanges ownChanges)
        : m_url(std::move(url))
        , m_ownChanges(ownChanges)
    {
        constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC;
        const OwnChanges::Guard change = m_ownChanges.begin({m_url});
        const char* path = systemPath(m_url);
        m_file = FileDescriptor{uninterrupted([&] { return ::open(path, flags, 0600); })};
        if (!m_file.isOpen())
            fail(cannotLock, m_url, errno);
    }

    ~File()
    {
        const OwnChanges::Guard change = m_ownChanges.begin({m_url});
        m_file.close();
    }

    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// False only if another process holds it and nobody wants to wait.
    bool lock(Waiting waiting)
    {
        const int operation = waiting == Waiting::none ? LOCK_EX | LOCK_NB : LOCK_EX;
        if (uninterrupted([&] { return ::flock(m_file.get(), operation); }) == 0)
            return true;
        if (errno != EWOULDBLOCK)
            fail(cannotLock, m_url, errno);
        return false;
    }

    /// Whether the path still leads to this file: a lock on a file that was removed excludes nobody.
    bool isStillThere() const
    {
        struct stat opened;
        struct stat there;
        return ::fstat(m_file.get(), &opened) == 0 && ::lstat(m_url.path().c_str(), &there) == 0
            && opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
    }

private:
    FileURL m_url;
    OwnChanges m_ownChanges;
    FileDescriptor m_file;
};

std::unique_ptr<SupportLock::File> SupportLock::lock(
    const FileURL& folder, OwnChanges ownChanges, Waiting waiting)
{
    AppSupport::create(folder, ownChanges);
    for (;;) {
        auto file = std::make_unique<File>(folder.appending("lock"), ownChanges);
        if (!file->lock(waiting))
            return nullptr;
        if (!file->isStillThere())
            continue;
        removeLeftovers(folder, ownChanges);
        return file;
    }
}

SupportLock SupportLock::acquire(const FileURL& supportFolder, OwnChanges ownChanges)
{
    return SupportLock{lock(supportFolder, ownChanges, Waiting::untilFree)};
}

std::optional<SupportLock> SupportLock::tryAcquire(
    const FileURL& supportFolder, OwnChanges ownChanges)
{
    std::unique_ptr<File> file = lock(supportFolder, ownChanges, Waiting::none);
    if (!file)
        return std::nullopt;
    return SupportLock{std::move(file)};
}

SupportLock::SupportLock(std::unique_ptr<File> file)
    : m_file(std::move(file))
{
}

bool SupportLock::isStillThere() const
{
    return m_file->isStillThere();
}

SupportLock::SupportLock(SupportLock&&) noexcept = default;
SupportLock& SupportLock::operator=(SupportLock&&) noexcept = default;
SupportLock::~SupportLock() = default;

}  // namespace tidemark
