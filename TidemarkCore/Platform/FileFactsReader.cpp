#include "FileFactsReader.h"

#include "OpenFolder.h"
#include "SystemCall.h"
#include "Text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <thread>

namespace tidemark::FileFactsReader {

namespace {

constexpr const char* cannotRead = "cannot read the facts of";

/// What a Mac leaves on the screenshots it shares, and what other tools can set by hand.
constexpr const char* propertyListFlag = "user.com.apple.metadata:kMDItemIsScreenCapture";
constexpr const char* plainFlag = "user.kMDItemIsScreenCapture";

/// No property list that holds one boolean is longer.
constexpr std::size_t longestFlag = 256;

constexpr unsigned statisticsWanted = STATX_BASIC_STATS | STATX_BTIME;

/// Below this many files, starting threads costs more than they save.
constexpr std::size_t filesWorthThreads = 2'000;
constexpr std::size_t mostThreads = 4;
constexpr std::size_t filesPerTurn = 256;

/// Whether the call failed only because the entry is there no longer.
bool hasVanished(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

Date date(const struct statx_timestamp& time)
{
    return dateFromUnixTime(time.tv_sec, time.tv_nsec);
}

CloudStatus cloudStatus(std::string_view name)
{
    const bool isPlaceholder = name.ends_with(".nextcloud") || name.ends_with(".owncloud");
    return isPlaceholder ? CloudStatus::notDownloaded : CloudStatus::notInCloud;
}

FileFacts factsFrom(const struct statx& statistics, std::string_view name)
{
    FileFacts facts;
    facts.isRegularFile = S_ISREG(statistics.stx_mode);
    facts.cloudStatus = cloudStatus(name);
    if (statistics.stx_mask & STATX_MTIME)
        facts.modified = date(statistics.stx_mtime);
    if (statistics.stx_mask & STATX_CTIME)
        facts.added = date(statistics.stx_ctime);
    if (statistics.stx_mask & STATX_ATIME)
        facts.lastOpened = date(statistics.stx_atime);
    if (statistics.stx_mask & STATX_BTIME)
        facts.created = date(statistics.stx_btime);
    return facts;
}

/// The value of an attribute; nothing when the file carries none, when it may not be read, or when it is
/// longer than a flag.
std::optional<std::string> attribute(const char* path, const char* name)
{
    std::array<char, longestFlag> value;
    const ssize_t size =
        uninterrupted([&] { return ::lgetxattr(path, name, value.data(), value.size()); });
    if (size < 0)
        return std::nullopt;
    return std::string{value.data(), static_cast<std::size_t>(size)};
}

/// Whether one of the names in a list as llistxattr writes it is `name`.
bool listHolds(std::string_view list, std::string_view name)
{
    while (!list.empty()) {
        const std::string_view each = list.substr(0, list.find('\0'));
        if (each == name)
            return true;
        list.remove_prefix(std::min(list.size(), each.size() + 1));
    }
    return false;
}

/// Whether the file is marked as a screen capture. Where that cannot be told it is not: an attribute that
/// may not be read must not keep a whole folder from being swept.
bool isMarkedAsScreenCapture(const char* path)
{
    std::array<char, 1024> buffer;
    const ssize_t size =
        uninterrupted([&] { return ::llistxattr(path, buffer.data(), buffer.size()); });
    // A list that is too long for the buffer is not known: both attributes are asked for.
    const bool isUnknown = size < 0 && errno == ERANGE;
    const std::string_view list{buffer.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
    if (isUnknown || listHolds(list, propertyListFlag)) {
        const auto value = attribute(path, propertyListFlag);
        if (value && isPropertyListTrue(*value))
            return true;
    }
    if (!isUnknown && !listHolds(list, plainFlag))
        return false;
    const auto value = attribute(path, plainFlag);
    return value == "1" || value == "true";
}

/// The facts of `name` in `folder` (an open descriptor, or AT_FDCWD when `name` is the whole path), but for
/// the screen-capture flag. Returns the errno of a failure, else 0.
int readFacts(int folder, const char* name, std::string_view lastComponent, FileFacts& facts)
{
    struct statx statistics;
    if (uninterrupted([&] {
            return ::statx(
                folder, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, statisticsWanted, &statistics);
        })
        != 0)
        return errno;
    facts = factsFrom(statistics, lastComponent);
    return 0;
}

/// The entries of a folder while their facts are being read.
struct Listing {
    std::vector<DirectoryEntry> entries;  // one that has vanished meanwhile loses its name
    std::vector<bool> mayBeFile;  // by entry; else its kind alone tells its facts
};

Listing list(DIR* directory, const FileURL& folder)
{
    // The names lie behind one another until there is a place for each: an array of entries that grows would
    // be copied again and again.
    std::string names;
    Listing listing;
    for (;;) {
        errno = 0;
        const struct dirent* found = ::readdir(directory);
        if (!found && errno != 0)
            fail(OpenFolder::cannotList, folder, errno);
        if (!found)
            break;
        const std::string_view name{found->d_name};
        if (name.starts_with('.') || !isValidUTF8(name))
            continue;
        listing.mayBeFile.push_back(found->d_type == DT_REG || found->d_type == DT_UNKNOWN);
        names.append(name).push_back('\0');
    }
    listing.entries.reserve(listing.mayBeFile.size());
    for (std::string_view rest = names; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find('\0'));
        listing.entries.push_back({std::string{name}, {}});
        rest.remove_prefix(name.size() + 1);
    }
    return listing;
}

/// Reads the facts of the entries of one folder, each of them in some thread's turn.
class FactsOfEntries {
public:
    FactsOfEntries(
        const FileURL& folder, int descriptor, const NameTest& flagMatters, Listing& listing)
        : m_folder(folder)
        , m_descriptor(descriptor)
        , m_flagMatters(flagMatters)
        , m_listing(listing)
    {
    }

    void read()
    {
        std::vector<std::thread> helpers;
        try {
            for (std::size_t i = 1; i < threadCount(); ++i)
                helpers.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            // No more threads to be had: those that there are do it all.
        }
        work();
        for (std::thread& helper : helpers)
            helper.join();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    std::size_t threadCount() const
    {
        if (m_listing.entries.size() < filesWorthThreads)
            return 1;
        return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
    }

    void work()
    {
        try {
            takeTurns();
        } catch (...) {
            // The first failure ends the others' work, too.
            if (!m_hasFailed.exchange(true))
                m_failure = std::current_exception();
        }
    }

    void takeTurns()
    {
        std::string path = m_folder.path() == "/" ? "" : m_folder.path();
        path += '/';
        const std::size_t folderSize = path.size();
        while (!m_hasFailed) {
            const std::size_t first = m_next.fetch_add(filesPerTurn);
            if (first >= m_listing.entries.size())
                return;
            const std::size_t last = std::min(first + filesPerTurn, m_listing.entries.size());
            for (std::size_t i = first; i < last; ++i) {
                path.resize(folderSize);
                path += m_listing.entries[i].name;
                if (m_listing.mayBeFile[i])
                    readEntry(m_listing.entries[i], path);
            }
        }
    }

    void readEntry(DirectoryEntry& entry, const std::string& path) const
    {
        const int error = readFacts(m_descriptor, entry.name.c_str(), entry.name, entry.facts);
        if (hasVanished(error))
            entry.name.clear();
        else if (error != 0)
            fail(cannotRead, FileURL{path}, error);
        else if (entry.facts.isRegularFile && m_flagMatters(entry.name))
            entry.facts.isScreenCapture = isMarkedAsScreenCapture(path.c_str());
    }

    const FileURL& m_folder;
    int m_descriptor;
    const NameTest& m_flagMatters;
    Listing& m_listing;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_hasFailed{false};
    std::exception_ptr m_failure;
};

/// Reads a big-endian number; nothing when it reaches out of the bytes.
std::optional<std::uint64_t> bigEndian(std::string_view bytes, std::uint64_t at, unsigned size)
{
    if (size > 8 || size > bytes.size() || at > bytes.size() - size)
        return std::nullopt;
    std::uint64_t value = 0;
    for (const char c : bytes.substr(static_cast<std::size_t>(at), size))
        value = value << 8 | static_cast<unsigned char>(c);
    return value;
}

}  // namespace

FileFacts facts(const FileURL& url)
{
    FileFacts facts;
    const char* path = systemPath(url);
    const int error = readFacts(AT_FDCWD, path, url.lastPathComponent(), facts);
    if (error != 0)
        fail(cannotRead, url, error);
    facts.isScreenCapture = facts.isRegularFile && isMarkedAsScreenCapture(path);
    return facts;
}

std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder)
{
    return contentsOfDirectory(folder, [](std::string_view) { return true; });
}

std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder, const NameTest& flagMatters)
{
    const OpenFolder::Handle directory = OpenFolder::open(folder);
    Listing listing = list(directory.get(), folder);
    FactsOfEntries{folder, ::dirfd(directory.get()), flagMatters, listing}.read();
    std::erase_if(listing.entries, [](const DirectoryEntry& entry) { return entry.name.empty(); });
    return std::move(listing.entries);
}

void requireListable(const FileURL& folder)
{
    const OpenFolder::Handle directory = OpenFolder::open(folder);
    errno = 0;
    if (!::readdir(directory.get()) && errno != 0)
        fail(OpenFolder::cannotList, folder, errno);
    // Names without the permission to look them up are of no use.
    struct stat ignored;
    if (::fstatat(::dirfd(directory.get()), ".", &ignored, 0) != 0)
        fail(OpenFolder::cannotList, folder, errno);
}

bool isPropertyListTrue(std::string_view bytes)
{
    // The list ends in 32 bytes: 6 unused, the size of an offset, the size of a reference, and as 64-bit
    // numbers the count of objects, which of them is the top one, and where the table of offsets starts.
    constexpr std::size_t trailerSize = 32;
    constexpr std::string_view magic = "bplist00";
    constexpr char trueObject = 0x09;
    if (!bytes.starts_with(magic) || bytes.size() < magic.size() + trailerSize)
        return false;

    const std::string_view trailer = bytes.substr(bytes.size() - trailerSize);
    const std::string_view body = bytes.substr(0, bytes.size() - trailerSize);
    const auto offsetSize = static_cast<unsigned char>(trailer[6]);
    const auto objects = bigEndian(trailer, 8, 8).value_or(0);
    const auto top = bigEndian(trailer, 16, 8).value_or(0);
    const auto table = bigEndian(trailer, 24, 8).value_or(0);
    if (offsetSize == 0 || offsetSize > 8 || top >= objects || table > body.size()
        || top > (body.size() - table) / offsetSize)
        return false;

    const auto object = bigEndian(body, table + top * offsetSize, offsetSize);
    return object && *object >= magic.size() && *object < table
        && body[static_cast<std::size_t>(*object)] == trueObject;
}

}  // namespace tidemark::FileFactsReader
