#include "OpenFolder.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>

namespace tidemark::OpenFolder {

Handle open(const FileURL& folder)
{
    const char* path = systemPath(folder);
    FileDescriptor descriptor{
        uninterrupted([&] { return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
    if (!descriptor.isOpen())
        fail(cannotList, folder, errno);
    Handle directory{::fdopendir(descriptor.get())};
    if (!directory)
        fail(cannotList, folder, errno);
    descriptor.release();
    return directory;
}

}  // namespace tidemark::OpenFolder
