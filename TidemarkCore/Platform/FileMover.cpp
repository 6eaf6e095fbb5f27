#include "FileMover.h"

#include "FileCopyMover.h"
#include "FileDescriptor.h"
#include "Folders.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace tidemark::FileMover {

namespace {

constexpr const char* cannotMove = "cannot move";

struct stat statusOf(const FileURL& url, const FileURL& from, const FileURL& to)
{
    struct stat status;
    if (::lstat(url.path().c_str(), &status) != 0)
        fail(cannotMove, from, to, errno);
    return status;
}

bool isSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether `url` still leads to the file with this status.
bool leadsTo(const FileURL& url, const struct stat& file)
{
    struct stat status;
    return ::lstat(url.path().c_str(), &status) == 0 && isSameFile(status, file);
}

/// Where two names of one file are numbered differently, it still shows the same facts under both.
bool isAlike(const struct stat& a, const struct stat& b)
{
    return a.st_mode == b.st_mode && a.st_uid == b.st_uid && a.st_size == b.st_size
        && a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

/// The name that a file is to get. Its folder is held open: whatever other programs put into the folder's
/// place meanwhile, nothing is looked up, replaced or removed there.
class NewName {
public:
    NewName(const FileURL& from, const FileURL& to)
        : m_from(from)
        , m_to(to)
        , m_name(to.lastPathComponent())
        , m_folder(uninterrupted(
              [&] { return ::open(to.parent().path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }))
    {
        if (!m_folder.isOpen())
            failed(errno);
    }

    int folder() const { return m_folder.get(); }
    const char* name() const { return m_name.c_str(); }

    /// The status of what stands there, which is not followed if it is a link.
    struct stat status() const
    {
        struct stat status;
        if (!look(status))
            failed(errno);
        return status;
    }

    bool leadsTo(const struct stat& file) const
    {
        struct stat status;
        return look(status) && isSameFile(status, file);
    }

    bool isEmptyFile() const
    {
        struct stat status;
        return look(status) && S_ISREG(status.st_mode) && status.st_size == 0;
    }

    /// Leaves it alone when something else stands there by now.
    void takeBack(const struct stat& file) const
    {
        if (leadsTo(file))
            ::unlinkat(folder(), name(), S_ISDIR(file.st_mode) ? AT_REMOVEDIR : 0);
    }

    [[noreturn]] void failed(int error) const { fail(cannotMove, m_from, m_to, error); }

private:
    bool look(struct stat& status) const
    {
        return ::fstatat(folder(), name(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    }

    const FileURL& m_from;
    const FileURL& m_to;
    std::string m_name;
    FileDescriptor m_folder;
};

/// On some file systems a power cut could take the new name back and not the removal of the old one.
void flushNewName(const FileURL& to, const NewName& place, const struct stat& linked)
{
    try {
        Folders::flushIfPossible(to.parent());
    } catch (const std::filesystem::filesystem_error& error) {
        place.takeBack(linked);
        place.failed(error.code().value());
    }
}

/// The second half of a move by link, once the new name is on the disk; `before` is the status of `from`
/// before there was a second name.
Result removeOldName(
    const FileURL& from, const NewName& place, const struct stat& linked, const struct stat& before)
{
    if (leadsTo(from, linked)) {
        if (::unlink(from.path().c_str()) == 0 || errno == ENOENT)
            return Result::moved;
        const int error = errno;
        place.takeBack(linked);
        place.failed(error);
    }
    // Some network file systems number the two names of one file differently. There is no telling then
    // whether the old name still is the file's. Anything else there is what another program put into our
    // name's place.
    if (leadsTo(from, before)) {
        if (!isAlike(linked, before))
            place.failed(EBUSY);
        place.takeBack(linked);
        return Result::notOffered;
    }
    // Another program removed or replaced the old name meanwhile. Where ours is the file's only name now,
    // this is what moving it just before would have led to; else it has been moved elsewhere.
    if (place.status().st_nlink <= 1)
        return Result::moved;
    place.takeBack(linked);
    place.failed(EBUSY);
}

void makeEmptyFile(const NewName& place)
{
    const FileDescriptor file{uninterrupted([&] {
        return ::openat(place.folder(), place.name(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    })};
    if (!file.isOpen())
        place.failed(errno);
}

void makeEmptyFolder(const NewName& place)
{
    if (::mkdirat(place.folder(), place.name(), 0700) != 0)
        place.failed(errno);
}

/// An empty file or folder that goes away again unless something was renamed over it.
class Placeholder {
public:
    Placeholder(const NewName& place, bool isFolder)
        : m_place(place)
        , m_isFolder(isFolder)
    {
        if (isFolder)
            makeEmptyFolder(place);
        else
            makeEmptyFile(place);
        m_status = place.status();
    }

    ~Placeholder()
    {
        if (!m_isReplaced && isUntouched())
            m_place.takeBack(m_status);
    }

    Placeholder(const Placeholder&) = delete;
    Placeholder& operator=(const Placeholder&) = delete;

    /// Whether it is still what was made here; that a folder is empty the kernel checks itself.
    bool isUntouched() const
    {
        return m_place.leadsTo(m_status) && (m_isFolder || m_place.isEmptyFile());
    }

    void setReplaced() { m_isReplaced = true; }

private:
    const NewName& m_place;
    bool m_isFolder;
    bool m_isReplaced = false;
    struct stat m_status = {};
};

}  // namespace

Result moveByRename(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({from, to});
    if (::renameat2(AT_FDCWD, from.path().c_str(), AT_FDCWD, to.path().c_str(), RENAME_NOREPLACE)
        == 0)
        return Result::moved;
    switch (errno) {
    case EXDEV:
        return Result::otherFileSystem;
    case EINVAL:  // Also a folder that is to go into itself; the placeholder's rename says so again.
    case ENOSYS:
    case ENOTSUP:
        return Result::notOffered;
    default:
        fail(cannotMove, from, to, errno);
    }
}

Result moveByLink(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({from, to});
    const struct stat before = statusOf(from, from, to);
    if (S_ISDIR(before.st_mode))
        return Result::notOffered;
    const NewName place{from, to};
    if (::linkat(AT_FDCWD, from.path().c_str(), place.folder(), place.name(), 0) != 0) {
        switch (errno) {
        case EXDEV:
            return Result::otherFileSystem;
        case EPERM:
        case ENOTSUP:
        case ENOSYS:
        case EMLINK:
            return Result::notOffered;
        default:
            fail(cannotMove, from, to, errno);
        }
    }
    const struct stat linked = place.status();
    // It takes its time, so what the old name leads to is looked up afterwards.
    flushNewName(to, place, linked);
    return removeOldName(from, place, linked, before);
}

Result moveByPlaceholder(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({from, to});
    const bool isFolder = S_ISDIR(statusOf(from, from, to).st_mode);
    const NewName place{from, to};
    Placeholder placeholder{place, isFolder};
    if (!placeholder.isUntouched())
        fail(cannotMove, from, to, EEXIST);
    if (::renameat(AT_FDCWD, from.path().c_str(), place.folder(), place.name()) != 0) {
        if (errno == EXDEV)
            return Result::otherFileSystem;
        fail(cannotMove, from, to, errno);
    }
    placeholder.setReplaced();
    return Result::moved;
}

Result moveWithinFileSystem(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    Result result = moveByRename(from, to, ownChanges);
    if (result == Result::notOffered)
        result = moveByLink(from, to, ownChanges);
    if (result == Result::notOffered)
        result = moveByPlaceholder(from, to, ownChanges);
    return result;
}

void move(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    systemPath(from);
    systemPath(to);
    if (moveWithinFileSystem(from, to, ownChanges) == Result::otherFileSystem)
        FileCopyMover::move(from, to, ownChanges);
}

}  // namespace tidemark::FileMover
