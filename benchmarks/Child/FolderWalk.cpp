#include "FolderWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace tidemark::bench {

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

[[noreturn]] void fail(const std::string& path)
{
    throw std::system_error(errno, std::generic_category(), path);
}

}  // namespace

FolderWalk FolderWalk::over(const std::string& folder)
{
    const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(folder.c_str()));
    if (!directory)
        fail(folder);
    FolderWalk walk;
    while (const struct dirent* entry = ::readdir(directory.get())) {
        if (entry->d_type != DT_REG && entry->d_type != DT_UNKNOWN)
            continue;
        struct statx status;
        if (::statx(::dirfd(directory.get()), entry->d_name, AT_SYMLINK_NOFOLLOW,
                STATX_BASIC_STATS | STATX_BTIME, &status)
            != 0)
            fail(entry->d_name);
        ++walk.files;
        walk.sumOfModifiedSeconds += status.stx_mtime.tv_sec;
    }
    return walk;
}

}  // namespace tidemark::bench
