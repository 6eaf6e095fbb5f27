#include "Folders.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemark::Folders {

namespace {

constexpr const char* cannotMake = "cannot make the folder";

constexpr const char* cannotFlush = "cannot flush the folder";

/// Returns the errno of the failure, else 0.
int flushed(const FileURL& folder)
{
    const char* path = systemPath(folder);
    const FileDescriptor descriptor{
        uninterrupted([&] { return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
    if (!descriptor.isOpen())
        return errno;
    return uninterrupted([&] { return ::fsync(descriptor.get()); }) == 0 ? 0 : errno;
}

/// The same, but 0 where nothing can be brought to the disk: no such folder, none that may be opened (to
/// write into it takes less), or a file system that syncs no folders.
int flushedIfPossible(const FileURL& folder)
{
    const int error = flushed(folder);
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case EACCES:
    case EPERM:
    case EINVAL:
    case ENOTSUP:
    case ENOSYS:
        return 0;
    default:
        return error;
    }
}

int makeWithParents(const FileURL& folder, mode_t mode, OwnChanges ownChanges)
{
    const int error = makeOne(folder, mode, ownChanges);
    const FileURL parent = folder.parent();
    if (error != ENOENT || parent.path() == folder.path())
        return error;
    const int parentError = makeWithParents(parent, mode, ownChanges);
    return parentError == 0 ? makeOne(folder, mode, ownChanges) : parentError;
}

}  // namespace

int makeOne(const FileURL& folder, mode_t mode, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({folder});
    if (::mkdir(folder.path().c_str(), mode) != 0) {
        const int error = errno;
        return error == EEXIST && isFolder(folder) ? 0 : error;
    }
    const int error = flushedIfPossible(folder.parent());
    // The next one to make it would take it for safe.
    if (error != 0)
        ::rmdir(folder.path().c_str());
    return error;
}

void make(const FileURL& folder, mode_t mode, OwnChanges ownChanges)
{
    systemPath(folder);
    const int error = isFolder(folder) ? 0 : makeWithParents(folder, mode, ownChanges);
    if (error != 0)
        fail(cannotMake, folder, error);
}

bool isFolder(const FileURL& url)
{
    struct stat status;
    const char* path = systemPath(url);
    return uninterrupted([&] { return ::stat(path, &status); }) == 0 && S_ISDIR(status.st_mode);
}

int removeName(const FileURL& url, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({url});
    return ::unlink(url.path().c_str());
}

void flush(const FileURL& folder)
{
    if (const int error = flushed(folder); error != 0)
        fail(cannotFlush, folder, error);
}

void flushIfPossible(const FileURL& folder)
{
    if (const int error = flushedIfPossible(folder); error != 0)
        fail(cannotFlush, folder, error);
}

}  // namespace tidemark::Folders
