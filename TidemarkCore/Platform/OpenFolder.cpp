#include "OpenFolder.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>

namespace tidemark::OpenFolder {

/// `path` is looked up from `above` when it is relative; failures name `folder`.
static Handle openAt(int above, const char* path, const FileURL& folder)
{
    FileDescriptor descriptor{
        uninterrupted([&] { return ::openat(above, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
    if (!descriptor.isOpen())
        fail(cannotList, folder, errno);
    Handle directory{::fdopendir(descriptor.get())};
    if (!directory)
        fail(cannotList, folder, errno);
    descriptor.release();
    return directory;
}

Handle open(const FileURL& folder)
{
    return openAt(AT_FDCWD, systemPath(folder), folder);
}

Handle open(const HeldFolder& folder)
{
    return openAt(folder.descriptor(), ".", folder.url());
}

}  // namespace tidemark::OpenFolder
