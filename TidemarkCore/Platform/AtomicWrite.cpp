#include "AtomicWrite.h"

#include "FileDescriptor.h"
#include "Folders.h"
#include "RandomName.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <optional>
#include <vector>

namespace tidemark::AtomicWrite {

namespace {

constexpr const char* cannotWrite = "cannot write";
constexpr mode_t modeOfNewFiles = 0600;
constexpr mode_t permissionBits = 07777;

/// Where a link leads; nothing when `url` is none.
std::optional<FileURL> linkTarget(const FileURL& url)
{
    std::array<char, PATH_MAX> target;
    const ssize_t size = ::readlink(systemPath(url), target.data(), target.size());
    if (size < 0) {
        if (errno == EINVAL || errno == ENOENT)
            return std::nullopt;
        fail(cannotWrite, url, errno);
    }
    const std::string_view path{target.data(), static_cast<std::size_t>(size)};
    return path.starts_with('/') ? FileURL{std::string{path}} : url.parent().appending(path);
}

/// The file to replace, which a link at `url` may lead to.
FileURL followed(const FileURL& url)
{
    constexpr int mostLinks = 40;
    FileURL at = url;
    for (int links = 0; links <= mostLinks; ++links) {
        const std::optional<FileURL> next = linkTarget(at);
        if (!next)
            return at;
        at = *next;
    }
    fail(cannotWrite, url, ELOOP);
}

/// The permissions that the file has now or is to get. Throws when something else than a file is there.
mode_t modeToKeep(const FileURL& url)
{
    struct stat status;
    if (::lstat(url.path().c_str(), &status) != 0) {
        if (errno == ENOENT)
            return modeOfNewFiles;
        fail(cannotWrite, url, errno);
    }
    if (S_ISDIR(status.st_mode))
        fail(cannotWrite, url, EISDIR);
    if (!S_ISREG(status.st_mode))
        fail(cannotWrite, url, EINVAL);
    return status.st_mode & permissionBits;
}

/// A file that takes its name away with it unless it was put into place.
class TemporaryFile {
public:
    /// Failures name `url`, which leads to `target`: nobody knows the temporary name.
    TemporaryFile(const FileURL& url, const FileURL& target, OwnChanges ownChanges)
        : m_ownChanges(ownChanges)
        , m_url(target.parent().appending(
              '.' + std::string{target.lastPathComponent()} + '.' + RandomName::digits() + ".tmp"))
        , m_change(ownChanges.begin({m_url}))
        , m_file(uninterrupted([this] {
            return ::open(m_url.path().c_str(),
                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, modeOfNewFiles);
        }))
    {
        if (!m_file.isOpen())
            fail(cannotWrite, url, errno);
    }

    ~TemporaryFile()
    {
        if (!m_isInPlace)
            ::unlink(m_url.path().c_str());
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return m_file.get(); }

    void renameTo(const FileURL& target, const FileURL& url)
    {
        // Now, under the name that is known to be changing. A network file system tells only here that the
        // disk is full.
        if (m_file.close() != 0 && errno != EINTR)
            fail(cannotWrite, url, errno);
        const OwnChanges::Guard change = m_ownChanges.begin({m_url, target});
        if (::rename(m_url.path().c_str(), target.path().c_str()) != 0)
            fail(cannotWrite, url, errno);
        m_isInPlace = true;
    }

private:
    OwnChanges m_ownChanges;
    FileURL m_url;
    OwnChanges::Guard m_change;  ///< Ends after the file is closed.
    FileDescriptor m_file;
    bool m_isInPlace = false;
};

/// Takes what has been written off the front of the pieces.
void takeOff(std::span<iovec>& pieces, std::size_t written)
{
    while (!pieces.empty() && written >= pieces.front().iov_len) {
        written -= pieces.front().iov_len;
        pieces = pieces.subspan(1);
    }
    if (!pieces.empty()) {
        pieces.front().iov_base = static_cast<char*>(pieces.front().iov_base) + written;
        pieces.front().iov_len -= written;
    }
}

void writePieces(
    const TemporaryFile& file, const FileURL& url, std::span<const std::string_view> pieces)
{
    std::vector<iovec> buffers;
    buffers.reserve(pieces.size());
    for (const std::string_view piece : pieces)
        buffers.push_back({const_cast<char*>(piece.data()), piece.size()});

    std::span<iovec> rest{buffers};
    takeOff(rest, 0);
    while (!rest.empty()) {
        const auto count = static_cast<int>(std::min<std::size_t>(rest.size(), IOV_MAX));
        const ssize_t written =
            uninterrupted([&] { return ::writev(file.descriptor(), rest.data(), count); });
        if (written < 0)
            fail(cannotWrite, url, errno);
        takeOff(rest, static_cast<std::size_t>(written));
    }
}

}  // namespace

void write(const FileURL& url, std::span<const std::string_view> pieces, OwnChanges ownChanges)
{
    const FileURL target = followed(url);
    const mode_t mode = modeToKeep(target);

    TemporaryFile file{url, target, ownChanges};
    writePieces(file, url, pieces);
    if (mode != modeOfNewFiles && ::fchmod(file.descriptor(), mode) != 0)
        fail(cannotWrite, url, errno);
    if (uninterrupted([&] { return ::fdatasync(file.descriptor()); }) != 0)
        fail(cannotWrite, url, errno);
    file.renameTo(target, url);
    // The rename itself is safe from a power cut only when the folder has reached the disk, too.
    Folders::flush(target.parent());
}

bool isTemporaryName(std::string_view name, std::string_view fileName)
{
    const std::string prefix = '.' + std::string{fileName} + '.';
    constexpr std::string_view suffix = ".tmp";
    if (!name.starts_with(prefix) || !name.ends_with(suffix)
        || name.size() < prefix.size() + suffix.size())
        return false;
    name.remove_prefix(prefix.size());
    name.remove_suffix(suffix.size());
    return RandomName::isDigits(name);
}

void removeLeftovers(const FileURL& folder, std::string_view fileName, OwnChanges ownChanges)
{
    std::error_code ignored;
    for (std::filesystem::directory_iterator entry{folder.path(), ignored}, end;
         !ignored && entry != end; entry.increment(ignored)) {
        const std::string name = entry->path().filename().string();
        if (isTemporaryName(name, fileName))
            Folders::removeName(folder.appending(name), ownChanges);
    }
}

}  // namespace tidemark::AtomicWrite
