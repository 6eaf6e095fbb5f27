#include "FolderNames.h"

#include "OpenFolder.h"
#include "SystemCall.h"

#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>

namespace tidemark::FolderNames {

namespace {

/// File systems that take names for equal only when their bytes are, but for folders that ask for more. There
/// are others; but some of those can also be made to differ, and do not tell.
constexpr std::array<long, 3> exactFileSystems{EXT4_SUPER_MAGIC, BTRFS_SUPER_MAGIC, TMPFS_MAGIC};

bool takesNamesExactly(int folder)
{
    struct statfs statistics;
    if (uninterrupted([&] { return ::fstatfs(folder, &statistics); }) != 0
        || std::ranges::find(exactFileSystems, static_cast<long>(statistics.f_type))
            == exactFileSystems.end())
        return false;
    // A tmpfs that does not know these flags knows no folding of case either.
    int flags = 0;
    if (::ioctl(folder, FS_IOC_GETFLAGS, &flags) != 0)
        return errno == ENOTTY;
    return (flags & FS_CASEFOLD_FL) == 0;
}

bool visitAll(
    const OpenFolder::Handle& directory, const FileURL& folder, const NameVisitor& visitor)
{
    if (!takesNamesExactly(::dirfd(directory.get())))
        return false;
    for (;;) {
        errno = 0;
        const struct dirent* found = ::readdir(directory.get());
        if (!found && errno != 0)
            fail(OpenFolder::cannotList, folder, errno);
        if (!found)
            return true;
        visitor(found->d_name);
    }
}

}  // namespace

bool visit(const FileURL& folder, const NameVisitor& visitor)
{
    return visitAll(OpenFolder::open(folder), folder, visitor);
}

bool visit(const HeldFolder& folder, const NameVisitor& visitor)
{
    return visitAll(OpenFolder::open(folder), folder.url(), visitor);
}

}  // namespace tidemark::FolderNames
