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

bool isEmptyFile(const FileURL& url)
{
    struct stat status;
    return ::lstat(url.path().c_str(), &status) == 0 && S_ISREG(status.st_mode)
        && status.st_size == 0;
}

/// On some file systems a power cut could take the new name back and not the removal of the old one.
void flushNewName(const FileURL& from, const FileURL& to)
{
    try {
        Folders::flushIfPossible(to.parent());
    } catch (const std::filesystem::filesystem_error& error) {
        ::unlink(to.path().c_str());
        fail(cannotMove, from, to, error.code().value());
    }
}

/// The second half of a move by link; `before` is the status of `from` before there was a second name.
Result removeOldName(const FileURL& from, const FileURL& to, const struct stat& before)
{
    const struct stat linked = statusOf(to, from, to);
    if (leadsTo(from, linked)) {
        flushNewName(from, to);
        if (::unlink(from.path().c_str()) == 0 || errno == ENOENT)
            return Result::moved;
        const int error = errno;
        ::unlink(to.path().c_str());
        fail(cannotMove, from, to, error);
    }
    // Some network file systems number the two names of one file differently. There is no telling then
    // whether the old name still is the file's.
    if (leadsTo(from, before)) {
        ::unlink(to.path().c_str());
        return Result::notOffered;
    }
    // Another program removed or replaced the old name meanwhile. Where ours is the file's only name now,
    // this is what moving it just before would have led to; else it has been moved elsewhere.
    if (linked.st_nlink <= 1)
        return Result::moved;
    ::unlink(to.path().c_str());
    fail(cannotMove, from, to, EBUSY);
}

void makeEmptyFile(const FileURL& from, const FileURL& to)
{
    const FileDescriptor file{uninterrupted([&] {
        return ::open(
            to.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    })};
    if (!file.isOpen())
        fail(cannotMove, from, to, errno);
}

void makeEmptyFolder(const FileURL& from, const FileURL& to)
{
    if (::mkdir(to.path().c_str(), 0700) != 0)
        fail(cannotMove, from, to, errno);
}

/// An empty file or folder at `to` that goes away again unless something was renamed over it.
class Placeholder {
public:
    Placeholder(const FileURL& from, const FileURL& to, bool isFolder)
        : m_url(to)
        , m_isFolder(isFolder)
    {
        if (isFolder)
            makeEmptyFolder(from, to);
        else
            makeEmptyFile(from, to);
        m_status = statusOf(to, from, to);
    }

    ~Placeholder()
    {
        if (m_isReplaced || !isUntouched())
            return;
        if (m_isFolder)
            ::rmdir(m_url.path().c_str());
        else
            ::unlink(m_url.path().c_str());
    }

    Placeholder(const Placeholder&) = delete;
    Placeholder& operator=(const Placeholder&) = delete;

    /// Whether it is still what was made here; that a folder is empty the kernel checks itself.
    bool isUntouched() const
    {
        return leadsTo(m_url, m_status) && (m_isFolder || isEmptyFile(m_url));
    }

    void setReplaced() { m_isReplaced = true; }

private:
    const FileURL& m_url;
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
    if (::linkat(AT_FDCWD, from.path().c_str(), AT_FDCWD, to.path().c_str(), 0) != 0) {
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
    return removeOldName(from, to, before);
}

Result moveByPlaceholder(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    const OwnChanges::Guard change = ownChanges.begin({from, to});
    const bool isFolder = S_ISDIR(statusOf(from, from, to).st_mode);
    Placeholder placeholder{from, to, isFolder};
    if (!placeholder.isUntouched())
        fail(cannotMove, from, to, EEXIST);
    if (::rename(from.path().c_str(), to.path().c_str()) != 0) {
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
