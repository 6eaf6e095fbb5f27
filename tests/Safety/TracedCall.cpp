#include "TracedCall.h"

#include <sys/syscall.h>

#include <cstring>

namespace tidemark {

bool TracedCall::changesTheDisk() const
{
    switch (kind) {
    case Kind::look:
    case Kind::open:
    case Kind::read:
    case Kind::close:
        return false;
    default:
        return true;
    }
}

std::string TracedCall::text() const
{
    std::string text = name + ' ' + path;
    if (!otherPath.empty())
        text += " -> " + otherPath;
    return result < 0 ? text + ": " + std::strerror(static_cast<int>(-result)) : text;
}

const std::vector<TracedCallShape>& tracedCallShapes()
{
    using Kind = TracedCall::Kind;
    static const std::vector<TracedCallShape> shapes = {
#ifdef __x86_64__
        {.number = SYS_open, .name = "open", .kind = Kind::open, .path = 0},
        {.number = SYS_creat, .name = "creat", .kind = Kind::create, .path = 0},
        {.number = SYS_stat, .name = "stat", .kind = Kind::look, .path = 0},
        {.number = SYS_lstat, .name = "lstat", .kind = Kind::look, .path = 0},
        {.number = SYS_access, .name = "access", .kind = Kind::look, .path = 0},
        {.number = SYS_readlink, .name = "readlink", .kind = Kind::look, .path = 0},
        {.number = SYS_utime, .name = "utime", .kind = Kind::attribute, .path = 0},
        {.number = SYS_utimes, .name = "utimes", .kind = Kind::attribute, .path = 0},
        {.number = SYS_chmod, .name = "chmod", .kind = Kind::attribute, .path = 0},
        {.number = SYS_chown, .name = "chown", .kind = Kind::attribute, .path = 0},
        {.number = SYS_lchown, .name = "lchown", .kind = Kind::attribute, .path = 0},
        {.number = SYS_mkdir, .name = "mkdir", .kind = Kind::makeFolder, .path = 0},
        {.number = SYS_rmdir, .name = "rmdir", .kind = Kind::removeFolder, .path = 0},
        {.number = SYS_link, .name = "link", .kind = Kind::link, .path = 0, .otherPath = 1},
        {.number = SYS_symlink, .name = "symlink", .kind = Kind::symlink, .path = 1},
        {.number = SYS_unlink, .name = "unlink", .kind = Kind::remove, .path = 0},
        {.number = SYS_rename, .name = "rename", .kind = Kind::rename, .path = 0, .otherPath = 1},
#endif
        {.number = SYS_openat, .name = "openat", .kind = Kind::open, .folder = 0, .path = 1},
        {.number = SYS_newfstatat, .name = "fstatat", .kind = Kind::look, .folder = 0, .path = 1},
        {.number = SYS_statx, .name = "statx", .kind = Kind::look, .folder = 0, .path = 1},
        {.number = SYS_faccessat, .name = "faccessat", .kind = Kind::look, .folder = 0, .path = 1},
        {.number = SYS_faccessat2,
            .name = "faccessat2",
            .kind = Kind::look,
            .folder = 0,
            .path = 1},
        {.number = SYS_readlinkat,
            .name = "readlinkat",
            .kind = Kind::look,
            .folder = 0,
            .path = 1},
        {.number = SYS_fstat, .name = "fstat", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_getdents64, .name = "getdents64", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_lseek, .name = "lseek", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_flock, .name = "flock", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_getxattr, .name = "getxattr", .kind = Kind::look, .path = 0},
        {.number = SYS_lgetxattr, .name = "lgetxattr", .kind = Kind::look, .path = 0},
        {.number = SYS_fgetxattr, .name = "fgetxattr", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_listxattr, .name = "listxattr", .kind = Kind::look, .path = 0},
        {.number = SYS_llistxattr, .name = "llistxattr", .kind = Kind::look, .path = 0},
        {.number = SYS_flistxattr, .name = "flistxattr", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_read, .name = "read", .kind = Kind::read, .descriptor = 0},
        {.number = SYS_pread64, .name = "pread64", .kind = Kind::read, .descriptor = 0},
        {.number = SYS_readv, .name = "readv", .kind = Kind::read, .descriptor = 0},
        {.number = SYS_write, .name = "write", .kind = Kind::write, .descriptor = 0},
        {.number = SYS_pwrite64, .name = "pwrite64", .kind = Kind::write, .descriptor = 0},
        {.number = SYS_writev, .name = "writev", .kind = Kind::write, .descriptor = 0},
        {.number = SYS_pwritev, .name = "pwritev", .kind = Kind::write, .descriptor = 0},
        {.number = SYS_ioctl, .name = "ioctl", .kind = Kind::look, .descriptor = 0},
        {.number = SYS_copy_file_range,
            .name = "copy_file_range",
            .kind = Kind::clone,
            .descriptor = 2},
        {.number = SYS_sendfile, .name = "sendfile", .kind = Kind::clone, .descriptor = 0},
        {.number = SYS_truncate, .name = "truncate", .kind = Kind::truncate, .path = 0},
        {.number = SYS_ftruncate, .name = "ftruncate", .kind = Kind::truncate, .descriptor = 0},
        {.number = SYS_fallocate, .name = "fallocate", .kind = Kind::truncate, .descriptor = 0},
        {.number = SYS_setxattr, .name = "setxattr", .kind = Kind::attribute, .path = 0},
        {.number = SYS_lsetxattr, .name = "lsetxattr", .kind = Kind::attribute, .path = 0},
        {.number = SYS_fsetxattr, .name = "fsetxattr", .kind = Kind::attribute, .descriptor = 0},
        {.number = SYS_removexattr, .name = "removexattr", .kind = Kind::attribute, .path = 0},
        {.number = SYS_lremovexattr, .name = "lremovexattr", .kind = Kind::attribute, .path = 0},
        {.number = SYS_fremovexattr,
            .name = "fremovexattr",
            .kind = Kind::attribute,
            .descriptor = 0},
        {.number = SYS_utimensat,
            .name = "utimensat",
            .kind = Kind::attribute,
            .folder = 0,
            .path = 1},
        {.number = SYS_fchmod, .name = "fchmod", .kind = Kind::attribute, .descriptor = 0},
        {.number = SYS_fchmodat,
            .name = "fchmodat",
            .kind = Kind::attribute,
            .folder = 0,
            .path = 1},
        {.number = SYS_fchown, .name = "fchown", .kind = Kind::attribute, .descriptor = 0},
        {.number = SYS_fchownat,
            .name = "fchownat",
            .kind = Kind::attribute,
            .folder = 0,
            .path = 1},
        {.number = SYS_fsync, .name = "fsync", .kind = Kind::sync, .descriptor = 0},
        {.number = SYS_fdatasync, .name = "fdatasync", .kind = Kind::sync, .descriptor = 0},
        {.number = SYS_syncfs, .name = "syncfs", .kind = Kind::sync, .descriptor = 0},
        {.number = SYS_sync_file_range,
            .name = "sync_file_range",
            .kind = Kind::sync,
            .descriptor = 0},
        {.number = SYS_mkdirat,
            .name = "mkdirat",
            .kind = Kind::makeFolder,
            .folder = 0,
            .path = 1},
        {.number = SYS_mknodat, .name = "mknodat", .kind = Kind::create, .folder = 0, .path = 1},
        {.number = SYS_linkat,
            .name = "linkat",
            .kind = Kind::link,
            .folder = 0,
            .path = 1,
            .otherFolder = 2,
            .otherPath = 3},
        {.number = SYS_symlinkat,
            .name = "symlinkat",
            .kind = Kind::symlink,
            .folder = 1,
            .path = 2},
        {.number = SYS_unlinkat, .name = "unlinkat", .kind = Kind::remove, .folder = 0, .path = 1},
        {.number = SYS_renameat,
            .name = "renameat",
            .kind = Kind::rename,
            .folder = 0,
            .path = 1,
            .otherFolder = 2,
            .otherPath = 3},
        {.number = SYS_renameat2,
            .name = "renameat2",
            .kind = Kind::rename,
            .folder = 0,
            .path = 1,
            .otherFolder = 2,
            .otherPath = 3},
        {.number = SYS_close, .name = "close", .kind = Kind::close, .descriptor = 0},
    };
    return shapes;
}

}  // namespace tidemark
