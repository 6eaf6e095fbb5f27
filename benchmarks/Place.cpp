#include "Place.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <sstream>

namespace tidemark::bench {

namespace {

constexpr std::uint64_t xfsMagic = 0x58465342;

std::string nameOf(std::uint64_t kind)
{
    switch (kind) {
    case EXT4_SUPER_MAGIC:
        return "ext4";
    case TMPFS_MAGIC:
        return "tmpfs";
    case BTRFS_SUPER_MAGIC:
        return "btrfs";
    case OVERLAYFS_SUPER_MAGIC:
        return "overlayfs";
    case F2FS_SUPER_MAGIC:
        return "f2fs";
    case xfsMagic:
        return "xfs";
    default: {
        std::ostringstream number;
        number << "fs " << std::hex << kind;
        return number.str();
    }
    }
}

std::string fileSystemOf(const FileURL& folder)
{
    struct statfs status;
    if (::statfs(folder.path().c_str(), &status) != 0)
        fail("cannot examine", folder, errno);
    return nameOf(static_cast<std::uint64_t>(status.f_type));
}

}  // namespace

Place Place::in(const FileURL& parent)
{
    return {.name = fileSystemOf(parent), .folder = std::make_shared<TemporaryFolder>(parent)};
}

std::optional<Place> Place::inMemory()
{
    try {
        const FileURL sharedMemory = FileURL::directory("/dev/shm");
        if (fileSystemOf(sharedMemory) == "tmpfs")
            return in(sharedMemory);
    } catch (const std::filesystem::filesystem_error&) {
        // Missing or not writable: there is none.
    }
    return std::nullopt;
}

void Place::flush() const
{
    const FileDescriptor descriptor(
        ::open(folder->url().path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen() || ::syncfs(descriptor.get()) != 0)
        fail("cannot flush", folder->url(), errno);
}

}  // namespace tidemark::bench
