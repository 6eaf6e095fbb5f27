#include "FileCopyMover.h"

#include "FileAttributes.h"
#include "FileContent.h"
#include "FileDescriptor.h"
#include "FileMover.h"
#include "Folders.h"
#include "RandomName.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <optional>

namespace tidemark::FileCopyMover {

namespace {

constexpr const char* cannotMove = "cannot move";
constexpr mode_t modeWhileCopying = 0600;

/// One move; throws its errors with both paths.
struct Move {
    const FileURL& from;
    const FileURL& to;
    OwnChanges ownChanges;

    [[noreturn]] void failed(int error) const { fail(cannotMove, from, to, error); }

    void require(bool succeeded) const
    {
        if (!succeeded)
            failed(errno);
    }
};

struct stat statusOf(int descriptor, const Move& move)
{
    struct stat status;
    move.require(::fstat(descriptor, &status) == 0);
    return status;
}

struct stat statusOf(const FileURL& url, const Move& move)
{
    struct stat status;
    move.require(::lstat(url.path().c_str(), &status) == 0);
    return status;
}

bool isSameMoment(const struct timespec& a, const struct timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// Whether `url` still leads to this file and nobody has changed it.
bool isUnchanged(const FileURL& url, const struct stat& file)
{
    struct stat now;
    return ::lstat(url.path().c_str(), &now) == 0 && now.st_dev == file.st_dev
        && now.st_ino == file.st_ino && now.st_size == file.st_size
        && isSameMoment(now.st_mtim, file.st_mtim) && isSameMoment(now.st_ctim, file.st_ctim);
}

FileDescriptor openSource(const Move& move)
{
    // O_NONBLOCK: a fifo that took the file's place must not hold the caller up.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const char* path = move.from.path().c_str();
    FileDescriptor file{uninterrupted([&] { return ::open(path, flags | O_NOATIME); })};
    // Only a file's owner may read it without leaving a trace.
    if (!file.isOpen() && errno == EPERM)
        file = FileDescriptor{uninterrupted([&] { return ::open(path, flags); })};
    move.require(file.isOpen());
    return file;
}

FileDescriptor openUnnamed(const FileURL& folder)
{
    return FileDescriptor{uninterrupted([&] {
        return ::open(folder.path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, modeWhileCopying);
    })};
}

/// How a process names a file that it holds open (proc(5)).
std::string pathOfDescriptor(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// The name that the kernel makes up for a nameless file in its folder, under which it tells of changes of
/// its content and attributes, though not of its closing.
FileURL madeUpName(int descriptor)
{
    constexpr std::string_view mark = " (deleted)";
    std::error_code ignored;
    std::string path =
        std::filesystem::read_symlink(pathOfDescriptor(descriptor), ignored).string();
    if (path.ends_with(mark))
        path.resize(path.size() - mark.size());
    return FileURL{path};
}

/// The copy that comes into place at `to`; taken back unless the move succeeds. The folder is held open: its
/// copy is found there even when another program moves the folder away meanwhile.
class PlacedCopy {
public:
    explicit PlacedCopy(const Move& move)
        : m_move(move)
        , m_name(move.to.lastPathComponent())
        , m_folder(uninterrupted([&] {
            return ::open(move.to.parent().path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        }))
    {
        move.require(m_folder.isOpen());
    }

    ~PlacedCopy()
    {
        struct stat there;
        if (m_isKept || !m_file
            || ::fstatat(m_folder.get(), name(), &there, AT_SYMLINK_NOFOLLOW) != 0
            || there.st_dev != m_file->st_dev || there.st_ino != m_file->st_ino)
            return;
        const OwnChanges::Guard change = m_move.ownChanges.begin({m_move.to});
        ::unlinkat(m_folder.get(), name(), 0);
    }

    PlacedCopy(const PlacedCopy&) = delete;
    PlacedCopy& operator=(const PlacedCopy&) = delete;

    int folder() const { return m_folder.get(); }
    const char* name() const { return m_name.c_str(); }

    /// This file is the copy, and stands there now.
    void setPlaced(const struct stat& file) { m_file = file; }
    void keep() { m_isKept = true; }

private:
    const Move& m_move;
    std::string m_name;
    FileDescriptor m_folder;
    std::optional<struct stat> m_file;
    bool m_isKept = false;
};

/// Ends the move once the whole copy stands at `to`.
void removeSource(const Move& move, const struct stat& source, PlacedCopy& copy)
{
    Folders::flush(move.to.parent());
    if (!isUnchanged(move.from, source))
        move.failed(EBUSY);
    // Gone already is what this move wanted.
    move.require(Folders::removeName(move.from, move.ownChanges) == 0 || errno == ENOENT);
    copy.keep();
}

/// Fills an empty file that nobody sees yet with all that the source is.
void fill(int copy, int source, const struct stat& status, const Move& move)
{
    FileContent::copy(source, copy, status.st_size, move.from, move.to);
    FileAttributes::copy(source, copy, status, move.from, move.to);
    move.require(uninterrupted([&] { return ::fsync(copy); }) == 0);
}

void giveName(int unnamed, const PlacedCopy& place, const Move& move)
{
    const OwnChanges::Guard change = move.ownChanges.begin({move.to});
    move.require(::linkat(AT_FDCWD, pathOfDescriptor(unnamed).c_str(), place.folder(), place.name(),
                     AT_SYMLINK_FOLLOW)
        == 0);
}

void moveFileUnnamed(int source, const struct stat& status, const Move& move)
{
    const FileDescriptor copy = openUnnamed(move.to.parent());
    move.require(copy.isOpen());
    const OwnChanges::Guard change = move.ownChanges.begin({madeUpName(copy.get())});
    fill(copy.get(), source, status, move);
    const struct stat copied = statusOf(copy.get(), move);
    PlacedCopy placed{move};
    giveName(copy.get(), placed, move);
    placed.setPlaced(copied);
    removeSource(move, status, placed);
}

/// A hidden file in the destination folder; its name goes away unless the file was moved into place.
class NamedTemporary {
public:
    explicit NamedTemporary(const Move& move)
        : m_url(move.to.parent().appending(".tidemark-" + RandomName::digits() + ".tmp"))
        , m_change(move.ownChanges.begin({m_url}))
        , m_file(uninterrupted([this] {
            return ::open(m_url.path().c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                modeWhileCopying);
        }))
    {
        move.require(m_file.isOpen());
    }

    ~NamedTemporary()
    {
        if (!m_isInPlace)
            ::unlink(m_url.path().c_str());
    }

    NamedTemporary(const NamedTemporary&) = delete;
    NamedTemporary& operator=(const NamedTemporary&) = delete;

    int descriptor() const { return m_file.get(); }

    void putInPlace(const Move& move)
    {
        // Now, under the name that is known to be changing. It has reached the disk: nothing to fail.
        m_file.close();
        if (FileMover::moveWithinFileSystem(m_url, move.to, move.ownChanges)
            != FileMover::Result::moved)
            move.failed(EXDEV);
        m_isInPlace = true;
    }

private:
    FileURL m_url;
    OwnChanges::Guard m_change;  ///< Ends after the file is closed.
    FileDescriptor m_file;
    bool m_isInPlace = false;
};

void moveFileNamed(int source, const struct stat& status, const Move& move)
{
    NamedTemporary copy{move};
    fill(copy.descriptor(), source, status, move);
    const struct stat copied = statusOf(copy.descriptor(), move);
    PlacedCopy placed{move};
    copy.putInPlace(move);
    placed.setPlaced(copied);
    removeSource(move, status, placed);
}

void moveFile(const Move& move, Temporary temporary)
{
    const FileDescriptor source = openSource(move);
    const struct stat status = statusOf(source.get(), move);
    if (!S_ISREG(status.st_mode))
        move.failed(EXDEV);
    if (temporary == Temporary::unnamed)
        moveFileUnnamed(source.get(), status, move);
    else
        moveFileNamed(source.get(), status, move);
}

std::string targetOf(const Move& move)
{
    std::array<char, PATH_MAX> target;
    const ssize_t size = ::readlink(move.from.path().c_str(), target.data(), target.size());
    move.require(size >= 0);
    return {target.data(), static_cast<std::size_t>(size)};
}

void moveLink(const Move& move)
{
    const struct stat source = statusOf(move.from, move);
    const std::string target = targetOf(move);
    PlacedCopy placed{move};
    const OwnChanges::Guard change = move.ownChanges.begin({move.to});
    move.require(::symlinkat(target.c_str(), placed.folder(), placed.name()) == 0);

    struct stat made;
    move.require(::fstatat(placed.folder(), placed.name(), &made, AT_SYMLINK_NOFOLLOW) == 0);
    placed.setPlaced(made);
    if (made.st_uid != source.st_uid || made.st_gid != source.st_gid)
        move.require(::fchownat(placed.folder(), placed.name(), source.st_uid, source.st_gid,
                         AT_SYMLINK_NOFOLLOW)
            == 0);
    const struct timespec times[] = {source.st_atim, source.st_mtim};
    move.require(::utimensat(placed.folder(), placed.name(), times, AT_SYMLINK_NOFOLLOW) == 0);
    removeSource(move, source, placed);
}

}  // namespace

bool offersUnnamedFiles(const FileURL& folder)
{
    return ::access("/proc/self/fd", X_OK) == 0 && openUnnamed(folder).isOpen();
}

void move(const FileURL& from, const FileURL& to, OwnChanges ownChanges, Temporary temporary)
{
    systemPath(from);
    systemPath(to);
    const Move move{from, to, ownChanges};
    const mode_t kind = statusOf(from, move).st_mode;
    if (S_ISLNK(kind))
        moveLink(move);
    else if (S_ISREG(kind))
        moveFile(move, temporary);
    else
        move.failed(EXDEV);
}

void move(const FileURL& from, const FileURL& to, OwnChanges ownChanges)
{
    systemPath(to);
    // Where even this cannot be made, the named file's error says why.
    const bool isOffered = offersUnnamedFiles(to.parent());
    move(from, to, ownChanges, isOffered ? Temporary::unnamed : Temporary::named);
}

}  // namespace tidemark::FileCopyMover
