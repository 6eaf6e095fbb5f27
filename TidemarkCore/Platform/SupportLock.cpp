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

enum class Waiting { untilFree, none };

FileDescriptor openLockFile(const FileURL& url)
{
    FileDescriptor file{uninterrupted(
        [&] { return ::open(systemPath(url), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600); })};
    if (!file.isOpen())
        fail(cannotLock, url, errno);
    return file;
}

/// Whether the file was locked; false only if another process holds it and nobody wants to wait.
bool lock(const FileDescriptor& file, const FileURL& url, Waiting waiting)
{
    const int operation = waiting == Waiting::none ? LOCK_EX | LOCK_NB : LOCK_EX;
    if (uninterrupted([&] { return ::flock(file.get(), operation); }) == 0)
        return true;
    if (errno != EWOULDBLOCK)
        fail(cannotLock, url, errno);
    return false;
}

/// Whether the path still leads to this file: a lock on a file that was removed excludes nobody.
bool isStillThere(const FileDescriptor& file, const FileURL& url)
{
    struct stat opened;
    struct stat there;
    return ::fstat(file.get(), &opened) == 0 && ::lstat(url.path().c_str(), &there) == 0
        && opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
}

std::optional<FileDescriptor> lockedFile(const FileURL& folder, Waiting waiting)
{
    AppSupport::create(folder);
    const FileURL url = folder.appending("lock");
    for (;;) {
        FileDescriptor file = openLockFile(url);
        if (!lock(file, url, waiting))
            return std::nullopt;
        if (isStillThere(file, url))
            return file;
    }
}

void removeLeftovers(const FileURL& folder)
{
    for (const char* name : {"settings.json", "journal.json", "last-failure.json"})
        AtomicWrite::removeLeftovers(folder, name);
}

}  // namespace

SupportLock SupportLock::acquire(const FileURL& supportFolder)
{
    std::optional<FileDescriptor> file = lockedFile(supportFolder, Waiting::untilFree);
    removeLeftovers(supportFolder);
    return SupportLock{std::move(*file)};
}

std::optional<SupportLock> SupportLock::tryAcquire(const FileURL& supportFolder)
{
    std::optional<FileDescriptor> file = lockedFile(supportFolder, Waiting::none);
    if (!file)
        return std::nullopt;
    removeLeftovers(supportFolder);
    return SupportLock{std::move(*file)};
}

SupportLock::SupportLock(FileDescriptor file)
    : m_file(std::make_unique<FileDescriptor>(std::move(file)))
{
}

SupportLock::SupportLock(SupportLock&&) noexcept = default;
SupportLock& SupportLock::operator=(SupportLock&&) noexcept = default;
SupportLock::~SupportLock() = default;

}  // namespace tidemark
