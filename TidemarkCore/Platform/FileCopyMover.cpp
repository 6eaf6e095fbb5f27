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

constexpr mode_t modeWhileCopying = 0600;

struct stat statusOf(int descriptor, const Move& move)
{
    struct stat status;
    move.require(::fstat(descriptor, &status) == 0);
    return status;
}

struct stat statusOf(const HeldEntry& entry, const Move& move)
{
    const std::optional<struct stat> status = Folders::statusOf(entry);
    move.require(status.has_value());
    return *status;
}

bool isSameMoment(const struct timespec& a, const struct timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// Whether this file still stands there and nobody has changed it.
bool isUnchanged(const HeldEntry& entry, const struct stat& file)
{
    const std::optional<struct stat> now = Folders::statusOf(entry);
    return now && now->st_dev == file.st_dev && now->st_ino == file.st_ino
        && now->st_size == file.st_size && isSameMoment(now->st_mtim, file.st_mtim)
        && isSameMoment(now->st_ctim, file.st_ctim);
}

FileDescriptor openSource(const Move& move)
{
    // O_NONBLOCK: a fifo that took the file's place must not hold the caller up.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const auto open = [&](int moreFlags) {
        return FileDescriptor{uninterrupted([&] {
            return ::openat(move.from.folder.descriptor(), move.from.name(), flags | moreFlags);
        })};
    };
    FileDescriptor file = open(O_NOATIME);
    // Only a file's owner may read it without leaving a trace.
    if (!file.isOpen() && errno == EPERM)
        file = open(0);
    move.require(file.isOpen());
    return file;
}

FileDescriptor openUnnamed(const HeldFolder& folder)
{
    return FileDescriptor{uninterrupted([&] {
        return ::openat(folder.descriptor(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, modeWhileCopying);
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

/// The copy that comes into place; taken back unless the move succeeds.
class PlacedCopy {
public:
    explicit PlacedCopy(const Move& move)
        : m_move(move)
    {
        // The copy took its time.
        move.requireFoldersInPlace();
    }

    ~PlacedCopy()
    {
        if (!m_isKept && m_file && Folders::leadsTo(m_move.to, *m_file))
            Folders::removeName(m_move.to, m_move.ownChanges);
    }

    PlacedCopy(const PlacedCopy&) = delete;
    PlacedCopy& operator=(const PlacedCopy&) = delete;

    /// This file is the copy, and stands there now.
    void setPlaced(const struct stat& file) { m_file = file; }
    void keep() { m_isKept = true; }

private:
    const Move& m_move;
    std::optional<struct stat> m_file;
    bool m_isKept = false;
};

/// Ends the move once the whole copy stands at `to`.
void removeSource(const Move& move, const struct stat& source, PlacedCopy& copy)
{
    Folders::flush(move.to.folder);
    move.requireFoldersInPlace();
    if (!isUnchanged(move.from, source))
        move.failed(EBUSY);
    // Gone already is what this move wanted.
    move.require(Folders::removeName(move.from, move.ownChanges) == 0 || errno == ENOENT);
    copy.keep();
}

/// Fills an empty file that nobody sees yet with all that the source is.
void fill(int copy, int source, const struct stat& status, const Move& move)
{
    FileContent::copy(source, copy, status.st_size, move.from.url, move.to.url);
    FileAttributes::copy(source, copy, status, move.from.url, move.to.url);
    move.require(uninterrupted([&] { return ::fsync(copy); }) == 0);
}

void giveName(int unnamed, const Move& move)
{
    const OwnChanges::Guard change = move.ownChanges.begin({move.to.url});
    move.require(::linkat(AT_FDCWD, pathOfDescriptor(unnamed).c_str(), move.to.folder.descriptor(),
                     move.to.name(), AT_SYMLINK_FOLLOW)
        == 0);
}

void moveFileUnnamed(int source, const struct stat& status, const Move& move)
{
    const FileDescriptor copy = openUnnamed(move.to.folder);
    move.require(copy.isOpen());
    const OwnChanges::Guard change = move.ownChanges.begin({madeUpName(copy.get())});
    fill(copy.get(), source, status, move);
    const struct stat copied = statusOf(copy.get(), move);
    PlacedCopy placed{move};
    giveName(copy.get(), move);
    placed.setPlaced(copied);
    removeSource(move, status, placed);
}

/// A hidden file in the destination folder; its name goes away unless the file was moved into place.
class NamedTemporary {
public:
    explicit NamedTemporary(const Move& move)
        : m_place{move.to.folder,
            move.to.folder.url().appending(".tidemark-" + RandomName::digits() + ".tmp")}
        , m_change(move.ownChanges.begin({m_place.url}))
        , m_file(uninterrupted([this] {
            return ::openat(m_place.folder.descriptor(), m_place.name(),
                O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, modeWhileCopying);
        }))
    {
        move.require(m_file.isOpen());
    }

    ~NamedTemporary()
    {
        if (!m_isInPlace)
            ::unlinkat(m_place.folder.descriptor(), m_place.name(), 0);
    }

    NamedTemporary(const NamedTemporary&) = delete;
    NamedTemporary& operator=(const NamedTemporary&) = delete;

    int descriptor() const { return m_file.get(); }

    void putInPlace(const Move& move)
    {
        // Now, under the name that is known to be changing. It has reached the disk: nothing to fail.
        m_file.close();
        if (FileMover::moveWithinFileSystem({m_place, move.to, move.ownChanges})
            != FileMover::Result::moved)
            move.failed(EXDEV);
        m_isInPlace = true;
    }

private:
    HeldEntry m_place;
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
    const ssize_t size =
        ::readlinkat(move.from.folder.descriptor(), move.from.name(), target.data(), target.size());
    move.require(size >= 0);
    return {target.data(), static_cast<std::size_t>(size)};
}

void moveLink(const Move& move)
{
    const struct stat source = statusOf(move.from, move);
    const std::string target = targetOf(move);
    const int folder = move.to.folder.descriptor();
    const char* name = move.to.name();
    PlacedCopy placed{move};
    const OwnChanges::Guard change = move.ownChanges.begin({move.to.url});
    move.require(::symlinkat(target.c_str(), folder, name) == 0);

    const struct stat made = statusOf(move.to, move);
    placed.setPlaced(made);
    if (made.st_uid != source.st_uid || made.st_gid != source.st_gid)
        move.require(
            ::fchownat(folder, name, source.st_uid, source.st_gid, AT_SYMLINK_NOFOLLOW) == 0);
    const struct timespec times[] = {source.st_atim, source.st_mtim};
    move.require(::utimensat(folder, name, times, AT_SYMLINK_NOFOLLOW) == 0);
    removeSource(move, source, placed);
}

}  // namespace

bool offersUnnamedFiles(const HeldFolder& folder)
{
    return ::access("/proc/self/fd", X_OK) == 0 && openUnnamed(folder).isOpen();
}

void move(const Move& move, Temporary temporary)
{
    systemPath(move.from.url);
    systemPath(move.to.url);
    const mode_t kind = statusOf(move.from, move).st_mode;
    if (S_ISLNK(kind))
        moveLink(move);
    else if (S_ISREG(kind))
        moveFile(move, temporary);
    else
        move.failed(EXDEV);
}

void move(const Move& move)
{
    // Where even this cannot be made, the named file's error says why.
    const bool isOffered = offersUnnamedFiles(move.to.folder);
    FileCopyMover::move(move, isOffered ? Temporary::unnamed : Temporary::named);
}

}  // namespace tidemark::FileCopyMover
