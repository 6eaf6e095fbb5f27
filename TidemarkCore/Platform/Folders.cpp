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
int makeOne(const FileURL& folder, mode_t mode)
{
    if (::mkdir(folder.path().c_str(), mode) == 0)
        return 0;
    const int error = errno;
    return error == EEXIST && isFolder(folder) ? 0 : error;
}

int makeWithParents(const FileURL& folder, mode_t mode)
{
    const int error = makeOne(folder, mode);
    const FileURL parent = folder.parent();
    if (error != ENOENT || parent.path() == folder.path())
        return error;
    const int parentError = makeWithParents(parent, mode);
    return parentError == 0 ? makeOne(folder, mode) : parentError;
}

}  // namespace

void make(const FileURL& folder, mode_t mode)
{
    systemPath(folder);
    const int error = isFolder(folder) ? 0 : makeWithParents(folder, mode);
    if (error != 0)
        fail(cannotMake, folder, error);
}

bool isFolder(const FileURL& url)
{
    struct stat status;
    const char* path = systemPath(url);
    return uninterrupted([&] { return ::stat(path, &status); }) == 0 && S_ISDIR(status.st_mode);
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
