#include "Folders.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemark::Folders {

namespace {

constexpr const char* cannotFind = "cannot find the folder";
constexpr const char* cannotMake = "cannot make the folder";
constexpr const char* cannotFlush = "cannot flush the folder";

/// An open folder, or the errno by which there is none.
struct Opened {
    FileDescriptor folder;
    int error = 0;
};

Opened openFolder(int parent, const char* path, int flags)
{
    FileDescriptor folder{
        uninterrupted([&] { return ::openat(parent, path, flags | O_DIRECTORY | O_CLOEXEC); })};
    const int error = folder.isOpen() ? 0 : errno;
    return {std::move(folder), error};
}

/// Returns the errno of the failure, else 0. Takes a folder and a path in it as openat(2) does.
int flushed(int parent, const char* path)
{
    const Opened opened = openFolder(parent, path, O_RDONLY);
    if (opened.error != 0)
        return opened.error;
    return uninterrupted([&] { return ::fsync(opened.folder.get()); }) == 0 ? 0 : errno;
}

/// But for where nothing can be brought to the disk: no such folder, none that may be opened (to write into
/// it takes less), or a file system that syncs no folders.
int unlessImpossible(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case EACCES:
    case EPERM:
    case EINVAL:
    case ENOTSUP:
    case ENOSYS:
        return 0;
    default:
        return error;
    }
}

/// Nobody can hold something else than what was made here, or found in place of it.
Opened makeOne(int parent, const FileURL& folder, mode_t mode, OwnChanges ownChanges)
{
    const char* name = folder.lastPathComponent().data();
    const OwnChanges::Guard change = ownChanges.begin({folder});
    if (::mkdirat(parent, name, mode) != 0) {
        if (errno != EEXIST)
            return {FileDescriptor{}, errno};
    } else if (const int error = unlessImpossible(flushed(parent, ".")); error != 0) {
        // The next one to make it would take it for safe.
        ::unlinkat(parent, name, AT_REMOVEDIR);
        return {FileDescriptor{}, error};
    }
    Opened opened = openFolder(parent, name, O_PATH | O_NOFOLLOW);
    if (opened.error == ENOTDIR || opened.error == ELOOP)
        opened.error = EEXIST;
    return opened;
}

/// Where a path begins.
struct Start {
    int folder;
    std::size_t length;  ///< Of the path before it.
};

constexpr Start root{AT_FDCWD, 0};

Start startBelow(const HeldFolder& above)
{
    const std::string& path = above.url().path();
    return {above.descriptor(), path.size() + (path.ends_with('/') ? 0U : 1U)};
}

/// Never an absolute path, which would lead elsewhere, though slashes may be doubled in `url`.
const char* pathFrom(const Start& start, const FileURL& url)
{
    const std::string& path = url.path();
    if (start.folder == AT_FDCWD)
        return path.c_str();
    const std::size_t rest = path.find_first_not_of('/', start.length);
    return rest == std::string::npos ? "." : path.c_str() + rest;
}

bool isAnythingAt(const Start& start, const FileURL& url)
{
    struct stat status;
    return ::fstatat(start.folder, pathFrom(start, url), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

Opened openOrMake(const Start& start, const FileURL& folder, mode_t mode, OwnChanges ownChanges)
{
    Opened found = openFolder(start.folder, pathFrom(start, folder), O_PATH);
    // It may be a file, or lead through one.
    if ((found.error == ENOTDIR || found.error == ELOOP) && isAnythingAt(start, folder))
        found.error = EEXIST;
    if (found.error != ENOENT || folder.path() == "/")
        return found;
    const FileURL parentURL = folder.parent();
    if (parentURL.path().size() <= start.length)
        return makeOne(start.folder, folder, mode, ownChanges);
    const Opened parent = openOrMake(start, parentURL, mode, ownChanges);
    if (parent.error != 0)
        return {FileDescriptor{}, parent.error};
    return makeOne(parent.folder.get(), folder, mode, ownChanges);
}

HeldFolder held(const char* what, const FileURL& url, Opened opened)
{
    if (opened.error != 0)
        fail(what, url, opened.error);
    struct stat status;
    if (::fstat(opened.folder.get(), &status) != 0)
        fail(what, url, errno);
    return {url, {status.st_dev, status.st_ino}, std::move(opened.folder)};
}

void requireFlushed(const FileURL& folder, int error)
{
    if (error != 0)
        fail(cannotFlush, folder, error);
}

}  // namespace

HeldFolder hold(const FileURL& url)
{
    return held(cannotFind, url, openFolder(AT_FDCWD, systemPath(url), O_PATH));
}

HeldFolder holdBelow(const HeldFolder& above, const FileURL& url)
{
    systemPath(url);
    const Start start = startBelow(above);
    return held(cannotFind, url, openFolder(start.folder, pathFrom(start, url), O_PATH));
}

HeldFolder holdIn(const HeldFolder& parent, std::string_view name)
{
    const FileURL url = parent.url().appending(name, FileURL::Kind::directory);
    return held(cannotFind, url,
        openFolder(parent.descriptor(), url.lastPathComponent().data(), O_PATH | O_NOFOLLOW));
}

void requireInPlace(const HeldFolder& folder)
{
    struct stat status;
    const char* path = folder.url().path().c_str();
    if (uninterrupted([&] { return ::stat(path, &status); }) != 0)
        fail("the folder can no longer be found at", folder.url(), errno);
    if (folder.identity() != HeldFolder::Identity{status.st_dev, status.st_ino})
        fail("something else was put in the place of the folder", folder.url(), EBUSY);
}

HeldFolder make(const FileURL& url, mode_t mode, OwnChanges ownChanges)
{
    systemPath(url);
    return held(cannotMake, url, openOrMake(root, url, mode, ownChanges));
}

HeldFolder makeBelow(
    const HeldFolder& above, const FileURL& url, mode_t mode, OwnChanges ownChanges)
{
    systemPath(url);
    return held(cannotMake, url, openOrMake(startBelow(above), url, mode, ownChanges));
}

HeldFolder makeIn(
    const HeldFolder& parent, std::string_view name, mode_t mode, OwnChanges ownChanges)
{
    const FileURL url = parent.url().appending(name, FileURL::Kind::directory);
    return held(cannotMake, url, makeOne(parent.descriptor(), url, mode, ownChanges));
}

bool isFolder(const FileURL& url)
{
    struct stat status;
    const char* path = systemPath(url);
    return uninterrupted([&] { return ::stat(path, &status); }) == 0 && S_ISDIR(status.st_mode);
}

std::optional<struct stat> statusOf(const HeldEntry& entry)
{
    struct stat status;
    if (uninterrupted([&] {
            return ::fstatat(entry.folder.descriptor(), entry.name(), &status, AT_SYMLINK_NOFOLLOW);
        })
        != 0)
        return std::nullopt;
    return status;
}

bool leadsTo(const HeldEntry& entry, const struct stat& file)
{
    const std::optional<struct stat> status = statusOf(entry);
    return status && status->st_dev == file.st_dev && status->st_ino == file.st_ino;
}

int removeName(const FileURL& url, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({url});
    return ::unlink(url.path().c_str());
}

int removeName(const HeldEntry& entry, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({entry.url});
    return ::unlinkat(entry.folder.descriptor(), entry.name(), 0);
}

void flush(const FileURL& folder)
{
    requireFlushed(folder, flushed(AT_FDCWD, systemPath(folder)));
}

void flush(const HeldFolder& folder)
{
    requireFlushed(folder.url(), flushed(folder.descriptor(), "."));
}

void flushIfPossible(const FileURL& folder)
{
    requireFlushed(folder, unlessImpossible(flushed(AT_FDCWD, systemPath(folder))));
}

void flushIfPossible(const HeldFolder& folder)
{
    requireFlushed(folder.url(), unlessImpossible(flushed(folder.descriptor(), ".")));
}

}  // namespace tidemark::Folders
