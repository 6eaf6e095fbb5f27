#include "Folders.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemark::Folders {

namespace {

constexpr const char* cannotMake = "cannot make the folder";

/// Returns the errno of the failure, else 0. A folder that is there already is none.
int makeOne(const FileURL& folder, mode_t mode, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({folder});
    if (::mkdir(folder.path().c_str(), mode) == 0)
        return 0;
    const int error = errno;
    return error == EEXIST && isFolder(folder) ? 0 : error;
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
    constexpr const char* cannotFlush = "cannot flush the folder";
    const char* path = systemPath(folder);
    const FileDescriptor descriptor{
        uninterrupted([&] { return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
    if (!descriptor.isOpen())
        fail(cannotFlush, folder, errno);
    if (uninterrupted([&] { return ::fsync(descriptor.get()); }) != 0)
        fail(cannotFlush, folder, errno);
}

}  // namespace tidemark::Folders
