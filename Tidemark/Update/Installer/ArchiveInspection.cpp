#include "ArchiveInspection.h"

#include "BundlePath.h"
#include "FileDescriptor.h"
#include "SystemCall.h"
#include "UpdateError.h"

#include <archive.h>
#include <archive_entry.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace tidemark::ArchiveInspection {

namespace {

constexpr std::string_view zipMagic = "PK\x03\x04";
constexpr std::string_view endMagic =
    "PK\x05\x06";  // of "end of central directory", APPNOTE.TXT 4.3.16
constexpr std::size_t endSize = 22;
constexpr std::string_view noComment{"\0\0", 2};
constexpr std::size_t blockSize = 64 << 10;
constexpr mode_t mostPermissions = 0777;
constexpr int bundleDepth = 1;  // a link may lead to its bundle, not beside it

[[noreturn]] void refuse(const std::string& reason)
{
    throw UpdateError{UpdateError::Case::unpack, "the archive is refused: " + reason};
}

struct Closer {
    void operator()(archive* reader) const { ::archive_read_free(reader); }
};
using Reader = std::unique_ptr<archive, Closer>;

[[noreturn]] void refuse(const Reader& reader)
{
    const char* reason = ::archive_error_string(reader.get());
    refuse(reason ? reason : "it cannot be read");
}

/// `size` bytes at `offset`, or fewer at the end of the file.
std::string bytesAt(const FileDescriptor& file, off_t offset, std::size_t size, const FileURL& url)
{
    std::string bytes(size, '\0');
    const ssize_t count =
        uninterrupted([&] { return ::pread(file.get(), bytes.data(), size, offset); });
    if (count < 0)
        fail("cannot read", url, errno);
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

/// Without the record at its end, which names the directory, the archive would be taken as a stream, in which
/// modes and links are unknown. Nobody needs the comment that may follow it.
void requireZipFrame(const FileDescriptor& file, const FileURL& url)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        fail("cannot read", url, errno);
    if (!S_ISREG(status.st_mode) || status.st_size < static_cast<off_t>(endSize)
        || bytesAt(file, 0, zipMagic.size(), url) != zipMagic)
        refuse("no zip archive");
    const std::string end =
        bytesAt(file, status.st_size - static_cast<off_t>(endSize), endSize, url);
    if (!end.starts_with(endMagic) || !end.ends_with(noComment))
        refuse("no whole zip archive");
}

/// The archive tool takes an archive for the format that fits best of all it knows, so the same ones are
/// offered here: a file that is two formats at once is seen as the tool sees it.
Reader opened(const FileDescriptor& file)
{
    Reader reader{::archive_read_new()};
    if (!reader)
        throw std::bad_alloc{};
    ::archive_read_support_filter_all(reader.get());
    ::archive_read_support_format_all(reader.get());
    if (::archive_read_open_fd(reader.get(), file.get(), blockSize) != ARCHIVE_OK)
        refuse(reader);
    return reader;
}

void requireZip(const Reader& reader)
{
    const bool isZip =
        (::archive_format(reader.get()) & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_ZIP;
    if (!isZip || ::archive_filter_code(reader.get(), 0) != ARCHIVE_FILTER_NONE)
        refuse("no zip archive");
}

enum class Kind { folder, file, link };

/// The entries so far.
class Inspection {
public:
    explicit Inspection(const Limits& limits)
        : m_limits(limits)
    {
    }

    void add(archive_entry* entry)
    {
        const std::string path = pathOf(entry);
        const Kind kind = kindOf(entry, path);
        if ((::archive_entry_perm(entry) & ~mostPermissions) != 0)
            refuse(path + " has a special mode");
        if (!m_kinds.emplace(path, kind).second)
            refuse(path + " is there twice");
        if (m_kinds.size() > m_limits.entries)
            refuse("too many entries");
    }

    /// Adds to what is unpacked.
    void count(std::int64_t bytes)
    {
        m_bytes += bytes;
        if (m_bytes > m_limits.unpackedBytes)
            refuse("too large unpacked");
    }

    /// Folders need no entries of their own; what has one has to be a folder.
    void requireFolders() const
    {
        for (const auto& [path, kind] : m_kinds)
            for (std::size_t slash = path.find('/'); slash != std::string::npos;
                 slash = path.find('/', slash + 1))
                if (const auto above = m_kinds.find(std::string_view{path}.substr(0, slash));
                    above != m_kinds.end() && above->second != Kind::folder)
                    refuse(path + " lies below what is no folder");
    }

private:
    static std::string pathOf(archive_entry* entry)
    {
        const char* name = ::archive_entry_pathname(entry);
        std::string path = name ? name : "";
        if (path.ends_with('/') && ::archive_entry_filetype(entry) == AE_IFDIR)
            path.pop_back();
        if (!BundlePath::isSafe(path))
            refuse("a name is not allowed");
        return path;
    }

    static Kind kindOf(archive_entry* entry, const std::string& path)
    {
        if (::archive_entry_hardlink(entry))
            refuse(path + " is a hard link");
        switch (::archive_entry_filetype(entry)) {
        case AE_IFDIR:
            return Kind::folder;
        case AE_IFREG:
            return Kind::file;
        case AE_IFLNK:
            requireStaysInside(entry, path);
            return Kind::link;
        default:
            refuse(path + " is something special");
        }
    }

    static void requireStaysInside(archive_entry* entry, const std::string& path)
    {
        const char* target = ::archive_entry_symlink(entry);
        if (!target || !BundlePath::staysInside(path, target, bundleDepth))
            refuse(path + " leads out");
    }

    const Limits& m_limits;
    std::map<std::string, Kind, std::less<>> m_kinds;
    std::int64_t m_bytes = 0;
};

void countContent(
    const Reader& reader, Inspection& inspection, const std::atomic<bool>& isCancelled)
{
    std::array<char, blockSize> block;
    for (;;) {
        if (isCancelled)
            throw std::system_error{std::make_error_code(std::errc::operation_canceled)};
        const la_ssize_t size = ::archive_read_data(reader.get(), block.data(), block.size());
        if (size < 0)
            refuse(reader);
        if (size == 0)
            return;
        inspection.count(size);
    }
}

void inspect(const Reader& reader, Inspection& inspection, const std::atomic<bool>& isCancelled)
{
    archive_entry* entry = nullptr;
    for (;;) {
        const int result = ::archive_read_next_header(reader.get(), &entry);
        if (result == ARCHIVE_EOF)
            return;
        if (result != ARCHIVE_OK)
            refuse(reader);
        requireZip(reader);
        inspection.add(entry);
        countContent(reader, inspection, isCancelled);
    }
}

}  // namespace

void requireHarmless(
    const FileURL& archive, const Limits& limits, const std::atomic<bool>& isCancelled)
{
    const FileDescriptor file{uninterrupted(
        [&] { return ::open(systemPath(archive), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); })};
    if (!file.isOpen())
        fail("cannot read", archive, errno);
    requireZipFrame(file, archive);
    const Reader reader = opened(file);
    Inspection inspection{limits};
    inspect(reader, inspection, isCancelled);
    inspection.requireFolders();
}

}  // namespace tidemark::ArchiveInspection
