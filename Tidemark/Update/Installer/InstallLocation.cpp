#include "InstallLocation.h"

#include "SystemCall.h"
#include "Text.h"
#include "UpdateError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace tidemark::InstallLocation {

namespace {

[[noreturn]] void refuse(const std::string& reason)
{
    throw UpdateError{UpdateError::Case::readOnlyLocation, reason};
}

bool isManaged(std::string_view path)
{
    constexpr std::array<std::string_view, 5> managed{
        "/usr/", "/nix/store/", "/gnu/store/", "/snap/", "/app/"};
    constexpr std::string_view ownOfMachine = "/usr/local/";
    const auto isAbove = [path](std::string_view folder) { return path.starts_with(folder); };
    return std::ranges::any_of(managed, isAbove) && !isAbove(ownOfMachine);
}

/// A file system that cannot be asked counts as writable: what is to be written shows soon enough.
bool isOnReadOnlyFileSystem(const FileURL& url)
{
    struct statvfs status = {};
    return uninterrupted([&] { return ::statvfs(systemPath(url), &status); }) == 0
        && (status.f_flag & ST_RDONLY) != 0;
}

bool isWritable(const FileURL& folder)
{
    return ::faccessat(AT_FDCWD, systemPath(folder), R_OK | W_OK | X_OK, AT_EACCESS) == 0;
}

/// In a sticky folder, such as /tmp, only its owner renames an entry.
bool isKeptFromUser(const FileURL& url)
{
    struct stat folder = {};
    struct stat entry = {};
    if (::stat(systemPath(url.parent()), &folder) != 0 || ::lstat(systemPath(url), &entry) != 0)
        return true;
    const uid_t user = ::geteuid();
    return (folder.st_mode & S_ISVTX) != 0 && user != 0 && user != folder.st_uid
        && user != entry.st_uid;
}

/// Such as /tmp: while the bundle is moved aside, anybody could put another one in its place.
bool isOpenToOthers(const FileURL& folder)
{
    struct stat status = {};
    return ::stat(systemPath(folder), &status) != 0 || (status.st_mode & S_IWOTH) != 0;
}

}  // namespace

std::optional<FileURL> bundleOf(const FileURL& executable)
{
    const FileURL programs = executable.parent();
    const FileURL bundle = programs.parent();
    struct stat status = {};
    if (programs.lastPathComponent() != "bin" || pathExtension(bundle.lastPathComponent()) != "app"
        || ::lstat(systemPath(bundle.appending("Info.json")), &status) != 0)
        return std::nullopt;
    return FileURL::directory(bundle.path());
}

void requireReplaceable(const std::optional<FileURL>& bundle)
{
    if (!bundle)
        refuse("the program does not run from a bundle");
    const std::string& path = bundle->path();
    if ((path + '/').find("/AppTranslocation/") != std::string::npos)
        refuse(path + " is a copy that vanishes");
    if (isManaged(path))
        refuse(path + " belongs to a package");
    if (isOnReadOnlyFileSystem(*bundle))
        refuse(path + " is on a read-only file system");
    if (!isWritable(bundle->parent()) || isKeptFromUser(*bundle))
        refuse(bundle->parent().path() + " cannot be written to");
    if (isOpenToOthers(bundle->parent()))
        refuse(bundle->parent().path() + " can be written to by everybody");
}

}  // namespace tidemark::InstallLocation
