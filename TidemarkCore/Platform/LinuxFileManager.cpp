#include "LinuxFileManager.h"

#include "AtomicWrite.h"
#include "FileDescriptor.h"
#include "FileFactsReader.h"
#include "FileMover.h"
#include "FolderNames.h"
#include "Folders.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace tidemark {

namespace {

constexpr const char* cannotRead = "cannot read";

/// O_NONBLOCK lets the opening of a fifo return, which is then found to be no regular file.
constexpr int readingFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

FileDescriptor openForReading(const FileURL& url, int moreFlags)
{
    const char* path = systemPath(url);
    return FileDescriptor{uninterrupted([&] { return ::open(path, readingFlags | moreFlags); })};
}

/// The size of an open file. Throws when it is no regular file.
std::size_t sizeOfRegularFile(const FileDescriptor& file, const FileURL& url)
{
    struct stat status;
    if (::fstat(file.get(), &status) != 0)
        fail(cannotRead, url, errno);
    if (S_ISDIR(status.st_mode))
        fail(cannotRead, url, EISDIR);
    if (!S_ISREG(status.st_mode))
        fail(cannotRead, url, EINVAL);
    return static_cast<std::size_t>(status.st_size);
}

/// Reads from where the file stands to its end or up to `maxBytes`. `expected` bytes are made room for.
std::string readUpTo(
    std::size_t maxBytes, std::size_t expected, const FileDescriptor& file, const FileURL& url)
{
    constexpr std::size_t step = std::size_t{64} << 10;
    // A little more room than content: parsers want to read past the end without a copy.
    constexpr std::size_t padding = 128;
    std::string content;
    content.reserve(std::min(expected, maxBytes) + padding);
    // One byte more than expected, so that the end shows without more room, which would mean a copy.
    content.resize(std::min(maxBytes, expected + 1));
    std::size_t size = 0;
    while (size < maxBytes) {
        if (size == content.size())
            content.resize(std::min(maxBytes, size + std::max(step, size / 2)));
        const ssize_t got = uninterrupted(
            [&] { return ::read(file.get(), content.data() + size, content.size() - size); });
        if (got < 0)
            fail(cannotRead, url, errno);
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    content.resize(size);
    return content;
}

/// Whether this errno of a look-up tells that nothing is there, rather than that it is not known. Nothing
/// can stand under a name that is too long.
bool meansNothingThere(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

std::int64_t nanoseconds(const struct timespec& time)
{
    // Unsigned arithmetic wraps for dates that are centuries away, which is good enough to compare.
    const auto whole = static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U;
    return static_cast<std::int64_t>(whole + static_cast<std::uint64_t>(time.tv_nsec));
}

}  // namespace

LinuxFileManager::LinuxFileManager(OwnChangeRecorder* ownChanges)
    : m_ownChanges(ownChanges)
    , m_trash(m_ownChanges)
{
}

bool LinuxFileManager::fileExists(const FileURL& url)
{
    struct stat status;
    const char* path = systemPath(url);
    if (uninterrupted([&] { return ::lstat(path, &status); }) == 0)
        return true;
    if (meansNothingThere(errno))
        return false;
    fail("cannot look up", url, errno);
}

bool LinuxFileManager::fileExists(const HeldEntry& entry)
{
    systemPath(entry.url);
    if (Folders::statusOf(entry))
        return true;
    if (meansNothingThere(errno))
        return false;
    fail("cannot look up", entry.url, errno);
}

bool LinuxFileManager::directoryExists(const FileURL& url)
{
    struct stat status;
    const char* path = systemPath(url);
    if (uninterrupted([&] { return ::stat(path, &status); }) == 0)
        return S_ISDIR(status.st_mode);
    if (meansNothingThere(errno))
        return false;
    fail("cannot look up", url, errno);
}

FileURL LinuxFileManager::resolvingLinks(const FileURL& url)
{
    const auto kind = url.isDirectory() ? FileURL::Kind::directory : FileURL::Kind::file;
    return FileURL{std::filesystem::weakly_canonical(systemPath(url)).string(), kind};
}

std::vector<DirectoryEntry> LinuxFileManager::contentsOfDirectory(const FileURL& folder)
{
    return FileFactsReader::contentsOfDirectory(folder);
}

std::vector<DirectoryEntry> LinuxFileManager::contentsWithFlags(
    const FileURL& folder, const NameTest& flagMatters)
{
    return FileFactsReader::contentsOfDirectory(folder, flagMatters);
}

bool LinuxFileManager::visitNames(const FileURL& folder, const NameVisitor& visit)
{
    return FolderNames::visit(folder, visit);
}

bool LinuxFileManager::visitNames(const HeldFolder& folder, const NameVisitor& visit)
{
    return FolderNames::visit(folder, visit);
}

void LinuxFileManager::requireListable(const FileURL& folder)
{
    FileFactsReader::requireListable(folder);
}

FileFacts LinuxFileManager::facts(const FileURL& url)
{
    return FileFactsReader::facts(url);
}

HeldFolder LinuxFileManager::hold(const FileURL& folder)
{
    return Folders::hold(folder);
}

HeldFolder LinuxFileManager::holdBelow(const HeldFolder& above, const FileURL& folder)
{
    Folders::requireInPlace(above);
    return Folders::holdBelow(above, folder);
}

HeldFolder LinuxFileManager::createDirectory(const FileURL& folder)
{
    return Folders::make(folder, 0777, m_ownChanges);
}

HeldFolder LinuxFileManager::createDirectoryBelow(const HeldFolder& above, const FileURL& folder)
{
    Folders::requireInPlace(above);
    return Folders::makeBelow(above, folder, 0777, m_ownChanges);
}

void LinuxFileManager::flushDirectory(const FileURL& folder)
{
    Folders::flushIfPossible(folder);
}

void LinuxFileManager::moveItem(const HeldEntry& from, const HeldEntry& to)
{
    FileMover::move({from, to, m_ownChanges});
    m_trash.removeRecord(from);
}

std::optional<FileURL> LinuxFileManager::trashItem(const HeldEntry& file)
{
    return m_trash.moveIn(file);
}

void LinuxFileManager::setCreationDate(const FileURL& url, Date)
{
    // The kernel has no call for it.
    fail("cannot set the creation date of", url, ENOTSUP);
}

std::string LinuxFileManager::readFile(const FileURL& url, std::size_t maxBytes)
{
    const FileDescriptor file = openForReading(url, 0);
    if (!file.isOpen())
        fail(cannotRead, url, errno);
    const std::size_t size = sizeOfRegularFile(file, url);
    if (size > maxBytes)
        fail(cannotRead, url, EFBIG);
    // It may grow while it is read.
    const std::size_t oneMore = maxBytes + (maxBytes < std::string::npos ? 1 : 0);
    std::string content = readUpTo(oneMore, size, file, url);
    if (content.size() > maxBytes)
        fail(cannotRead, url, EFBIG);
    return content;
}

std::string LinuxFileManager::readPrefix(const FileURL& url, std::size_t maxBytes)
{
    FileDescriptor file = openForReading(url, O_NOFOLLOW | O_NOATIME);
    // Only a file's owner may read it without leaving a trace.
    if (!file.isOpen() && errno == EPERM)
        file = openForReading(url, O_NOFOLLOW);
    if (!file.isOpen())
        fail(cannotRead, url, errno);
    const std::size_t size = sizeOfRegularFile(file, url);
    return readUpTo(maxBytes, size, file, url);
}

void LinuxFileManager::writeAtomically(const FileURL& url, std::span<const std::string_view> pieces)
{
    AtomicWrite::write(url, pieces, m_ownChanges);
}

std::optional<FileIdentity> LinuxFileManager::identity(const FileURL& url)
{
    struct stat status;
    const char* path = systemPath(url);
    if (uninterrupted([&] { return ::stat(path, &status); }) != 0) {
        if (meansNothingThere(errno))
            return std::nullopt;
        fail("cannot look up", url, errno);
    }
    return FileIdentity{status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
        nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
}

}  // namespace tidemark
