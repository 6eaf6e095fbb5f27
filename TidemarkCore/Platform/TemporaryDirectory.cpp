#include "TemporaryDirectory.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <QByteArray>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>

namespace tidemark::TemporaryDirectory {

namespace {

constexpr mode_t forTheUserAlone = 0700;
constexpr mode_t permissionBits = 07777;
constexpr mode_t writableByOthers = S_IWGRP | S_IWOTH;

/// Without any permission on the directory itself, which its mode may not grant yet.
FileDescriptor openDirectory(int at, const FileURL& url, const char* name, int moreFlags)
{
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    FileDescriptor directory{::openat(at, name, flags | moreFlags)};
    if (!directory.isOpen())
        fail("cannot open the temporary directory", url, errno);
    return directory;
}

struct stat statusOf(const FileDescriptor& directory, const FileURL& url)
{
    struct stat status;
    if (::fstat(directory.get(), &status) != 0)
        fail("cannot look at the temporary directory", url, errno);
    return status;
}

/// The owner of a folder can rename everything in it, and so can all who may write to it unless it is sticky.
void requireThatNobodyCanReplaceEntries(const FileDescriptor& parent, const FileURL& url)
{
    const struct stat status = statusOf(parent, url);
    const bool isOpen = (status.st_mode & writableByOthers) != 0;
    const bool isSticky = (status.st_mode & S_ISVTX) != 0;
    if ((status.st_uid != 0 && status.st_uid != ::geteuid()) || (isOpen && !isSticky))
        fail("other users could replace a temporary directory in", url, EPERM);
}

void requireOwn(const struct stat& status, const FileURL& url)
{
    if (status.st_uid != ::geteuid())
        fail("another user owns the temporary directory", url, EPERM);
    if ((status.st_mode & writableByOthers) != 0)
        fail("other users can write to the temporary directory", url, EPERM);
}

/// Also undoes what the umask, or the folder that holds it, made of the mode.
void closeToOthers(int parent, const char* name, const FileURL& url)
{
    if (::fchmodat(parent, name, forTheUserAlone, AT_SYMLINK_NOFOLLOW) != 0)
        fail("cannot close the temporary directory to others", url, errno);
}

FileURL folderIn(const FileURL& candidate)
{
    const std::string name = "tidemark-" + std::to_string(::geteuid());
    FileURL url = candidate.appending(name, FileURL::Kind::directory);
    const FileDescriptor parent = openDirectory(AT_FDCWD, candidate, systemPath(candidate), 0);
    requireThatNobodyCanReplaceEntries(parent, candidate);
    if (::mkdirat(parent.get(), name.c_str(), forTheUserAlone) != 0 && errno != EEXIST)
        fail("cannot make the temporary directory", url, errno);

    const FileDescriptor directory = openDirectory(parent.get(), url, name.c_str(), O_NOFOLLOW);
    requireOwn(statusOf(directory, url), url);
    if ((statusOf(directory, url).st_mode & permissionBits) != forTheUserAlone)
        closeToOthers(parent.get(), name.c_str(), url);
    if ((statusOf(directory, url).st_mode & permissionBits) != forTheUserAlone)
        fail("others can open the temporary directory", url, EPERM);
    if (::faccessat(parent.get(), name.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        fail("cannot write to the temporary directory", url, errno);
    return url;
}

}  // namespace

std::vector<FileURL> candidates()
{
    std::vector<FileURL> folders;
    const auto add = [&](std::string path) {
        if (path.starts_with('/'))
            folders.push_back(FileURL::directory(std::move(path)));
    };
    add(qgetenv("TMPDIR").toStdString());
    add("/tmp");
    add(qgetenv("XDG_RUNTIME_DIR").toStdString());
    return folders;
}

FileURL folder()
{
    return folder(candidates());
}

FileURL folder(std::span<const FileURL> candidates)
{
    std::exception_ptr firstReason;
    for (const FileURL& candidate : candidates) {
        try {
            return folderIn(candidate);
        } catch (const std::filesystem::filesystem_error&) {
            // The next one may do. What is wrong with the best one is what its user can mend.
            if (!firstReason)
                firstReason = std::current_exception();
        }
    }
    if (firstReason)
        std::rethrow_exception(firstReason);
    fail("there is no place for a temporary directory", FileURL{}, ENOENT);
}

}  // namespace tidemark::TemporaryDirectory
