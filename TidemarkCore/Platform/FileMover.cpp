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

struct stat statusOf(const HeldEntry& entry, const Move& move)
{
    const std::optional<struct stat> status = Folders::statusOf(entry);
    move.require(status.has_value());
    return *status;
}

/// Where two names of one file are numbered differently, it still shows the same facts under both.
bool isAlike(const struct stat& a, const struct stat& b)
{
    return a.st_mode == b.st_mode && a.st_uid == b.st_uid && a.st_size == b.st_size
        && a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

/// Removes the new name, unless something else stands there by now.
void takeBack(const HeldEntry& to, const struct stat& file)
{
    if (Folders::leadsTo(to, file))
        ::unlinkat(to.folder.descriptor(), to.name(), S_ISDIR(file.st_mode) ? AT_REMOVEDIR : 0);
}

/// On some file systems a power cut could take the new name back and not the removal of the old one. It takes
/// its time, in which either folder may be moved away.
void settleNewName(const Move& move, const struct stat& linked)
{
    try {
        Folders::flushIfPossible(move.to.folder);
        move.requireFoldersInPlace();
    } catch (const std::filesystem::filesystem_error&) {
        takeBack(move.to, linked);
        throw;
    }
}

/// The second half of a move by link, once the new name is on the disk; `before` is the status of `from`
/// before there was a second name.
Result removeOldName(const Move& move, const struct stat& linked, const struct stat& before)
{
    const auto& [from, to, ownChanges] = move;
    if (Folders::leadsTo(from, linked)) {
        if (::unlinkat(from.folder.descriptor(), from.name(), 0) == 0 || errno == ENOENT)
            return Result::moved;
        const int error = errno;
        takeBack(to, linked);
        move.failed(error);
    }
    // Some network file systems number the two names of one file differently. There is no telling then
    // whether the old name still is the file's. Anything else there is what another program put into our
    // name's place.
    if (Folders::leadsTo(from, before)) {
        if (!isAlike(linked, before))
            move.failed(EBUSY);
        takeBack(to, linked);
        return Result::notOffered;
    }
    // Another program removed or replaced the old name meanwhile. Where ours is the file's only name now,
    // this is what moving it just before would have led to; else it has been moved elsewhere.
    if (statusOf(to, move).st_nlink <= 1)
        return Result::moved;
    takeBack(to, linked);
    move.failed(EBUSY);
}

void makeEmptyFile(const Move& move)
{
    const FileDescriptor file{uninterrupted([&] {
        return ::openat(move.to.folder.descriptor(), move.to.name(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    })};
    move.require(file.isOpen());
}

void makeEmptyFolder(const Move& move)
{
    move.require(::mkdirat(move.to.folder.descriptor(), move.to.name(), 0700) == 0);
}

/// An empty file or folder that goes away again unless something was renamed over it.
class Placeholder {
public:
    Placeholder(const Move& move, bool isFolder)
        : m_place(move.to)
        , m_isFolder(isFolder)
    {
        if (isFolder)
            makeEmptyFolder(move);
        else
            makeEmptyFile(move);
        m_status = statusOf(m_place, move);
    }

    ~Placeholder()
    {
        if (!m_isReplaced && isUntouched())
            takeBack(m_place, m_status);
    }

    Placeholder(const Placeholder&) = delete;
    Placeholder& operator=(const Placeholder&) = delete;

    /// Whether it is still what was made here; that a folder is empty the kernel checks itself.
    bool isUntouched() const
    {
        return Folders::leadsTo(m_place, m_status) && (m_isFolder || isEmptyFile());
    }

    void setReplaced() { m_isReplaced = true; }

private:
    bool isEmptyFile() const
    {
        const std::optional<struct stat> status = Folders::statusOf(m_place);
        return status && S_ISREG(status->st_mode) && status->st_size == 0;
    }

    const HeldEntry& m_place;
    bool m_isFolder;
    bool m_isReplaced = false;
    struct stat m_status = {};
};

}  // namespace

Result moveByRename(const Move& move)
{
    const auto& [from, to, ownChanges] = move;
    const OwnChanges::Guard change = ownChanges.begin({from.url, to.url});
    if (::renameat2(from.folder.descriptor(), from.name(), to.folder.descriptor(), to.name(),
            RENAME_NOREPLACE)
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
        move.failed(errno);
    }
}

Result moveByLink(const Move& move)
{
    const auto& [from, to, ownChanges] = move;
    const OwnChanges::Guard change = ownChanges.begin({from.url, to.url});
    const struct stat before = statusOf(from, move);
    if (S_ISDIR(before.st_mode))
        return Result::notOffered;
    if (::linkat(from.folder.descriptor(), from.name(), to.folder.descriptor(), to.name(), 0)
        != 0) {
        switch (errno) {
        case EXDEV:
            return Result::otherFileSystem;
        case EPERM:
        case ENOTSUP:
        case ENOSYS:
        case EMLINK:
            return Result::notOffered;
        default:
            move.failed(errno);
        }
    }
    const struct stat linked = statusOf(to, move);
    settleNewName(move, linked);
    // What the old name leads to is looked up after that.
    return removeOldName(move, linked, before);
}

Result moveByPlaceholder(const Move& move)
{
    const auto& [from, to, ownChanges] = move;
    const OwnChanges::Guard change = ownChanges.begin({from.url, to.url});
    const bool isFolder = S_ISDIR(statusOf(from, move).st_mode);
    Placeholder placeholder{move, isFolder};
    if (!placeholder.isUntouched())
        move.failed(EEXIST);
    if (::renameat(from.folder.descriptor(), from.name(), to.folder.descriptor(), to.name()) != 0) {
        if (errno == EXDEV)
            return Result::otherFileSystem;
        move.failed(errno);
    }
    placeholder.setReplaced();
    return Result::moved;
}

Result moveWithinFileSystem(const Move& move)
{
    systemPath(move.from.url);
    systemPath(move.to.url);
    move.requireFoldersInPlace();
    Result result = moveByRename(move);
    if (result == Result::notOffered)
        result = moveByLink(move);
    if (result == Result::notOffered)
        result = moveByPlaceholder(move);
    return result;
}

void move(const Move& move)
{
    if (moveWithinFileSystem(move) == Result::otherFileSystem)
        FileCopyMover::move(move);
}

}  // namespace tidemark::FileMover
