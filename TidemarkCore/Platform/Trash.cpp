#include "Trash.h"

#include "FileDescriptor.h"
#include "FileMover.h"
#include "Folders.h"
#include "StandardFolders.h"
#include "SystemCall.h"
#include "Text.h"
#include "TrashRecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tidemark {

namespace {

constexpr const char* cannotTrash = "cannot move to the Trash";
constexpr mode_t forTheUserAlone = 0700;

/// So many files of one name are in a trash before it is given up.
constexpr int mostNames = 10'000;

struct stat statusOf(const FileURL& url)
{
    struct stat status;
    if (::lstat(url.path().c_str(), &status) != 0)
        fail(cannotTrash, url, errno);
    return status;
}

/// The path without any link in its folders. A link at its end is kept: it is what goes to the trash.
FileURL withoutLinks(const FileURL& url)
{
    const std::unique_ptr<char, decltype(&::free)> folder{
        ::realpath(url.parent().path().c_str(), nullptr), &::free};
    if (!folder)
        fail(cannotTrash, url, errno);
    return FileURL::directory(folder.get()).appending(url.lastPathComponent());
}

/// The device of a folder, or of where it is going to be made.
dev_t deviceOf(FileURL folder)
{
    struct stat status;
    while (::stat(folder.path().c_str(), &status) != 0) {
        if (errno != ENOENT || folder.path() == "/")
            fail(cannotTrash, folder, errno);
        folder = folder.parent();
    }
    return status.st_dev;
}

/// A file system as it appears in one place. One disk can be mounted twice, and nothing is renamed from
/// mount to mount.
struct Mount {
    std::uint32_t deviceMajor = 0;
    std::uint32_t deviceMinor = 0;
    std::uint64_t id = 0;  ///< 0 where the kernel does not tell (before 5.8).

    bool operator==(const Mount&) const = default;
};

Mount mountOf(const FileURL& folder)
{
    struct statx status;
    if (::statx(AT_FDCWD, folder.path().c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
            STATX_BASIC_STATS | STATX_MNT_ID, &status)
        != 0)
        fail(cannotTrash, folder, errno);
    const bool tells = (status.stx_mask & STATX_MNT_ID) != 0;
    return {status.stx_dev_major, status.stx_dev_minor, tells ? status.stx_mnt_id : 0};
}

/// Where the file system of `url` is mounted; nothing where it begins within a mount, as a subvolume of btrfs
/// does: no other program would look for a trash there.
std::optional<FileURL> mountPointAbove(const FileURL& url)
{
    FileURL top = url.parent();
    const Mount mount = mountOf(top);
    while (top.path() != "/") {
        const Mount above = mountOf(top.parent());
        if (above != mount)
            return mount.id != 0 && above.id == mount.id ? std::nullopt : std::optional{top};
        top = top.parent();
    }
    return top;
}

/// Whether `url` is a folder of the user's own, and no link to one; made for the user alone if nothing is
/// there.
bool hasOwnFolder(const FileURL& url, OwnChanges ownChanges)
{
    struct stat status;
    if (Folders::makeOne(url, forTheUserAlone, ownChanges) != 0)
        return false;
    return ::lstat(url.path().c_str(), &status) == 0 && S_ISDIR(status.st_mode)
        && status.st_uid == ::geteuid();
}

/// A folder for the trashes of all users, which the administrator made such that nobody can take away
/// another one's. A link there may lead anywhere.
bool isSharedTrash(const FileURL& url)
{
    struct stat status;
    return ::lstat(url.path().c_str(), &status) == 0 && S_ISDIR(status.st_mode)
        && (status.st_mode & S_ISVTX) != 0;
}

std::string userID()
{
    return std::to_string(::geteuid());
}

bool isInside(const FileURL& url, const FileURL& folder)
{
    return (url.path() + '/').starts_with(folder.path() == "/" ? "/" : folder.path() + '/');
}

/// One trash.
struct Place {
    FileURL folder;
    FileURL top;  ///< Records name their origin relative to this; the root for the home trash.

    FileURL files() const { return folder.appending("files"); }
    FileURL info() const { return folder.appending("info"); }
};

/// A file on its way to a trash.
struct Item {
    FileURL url;  ///< As the caller gave it.
    FileURL realURL;
    dev_t device;
    OwnChanges ownChanges;
};

/// The trash in `folder` at the top of a file system, made if it is missing; nothing if it cannot be had.
std::optional<Place> placeAtTop(const FileURL& top, const FileURL& folder, OwnChanges ownChanges)
{
    const Place place{folder, top};
    for (const FileURL& each : {folder, place.files(), place.info()}) {
        if (!hasOwnFolder(each, ownChanges))
            return std::nullopt;
    }
    return place;
}

std::vector<Place> placesBeside(const Item& item)
{
    std::vector<Place> places;
    const std::optional<FileURL> top = mountPointAbove(item.realURL);
    if (!top)
        return places;
    const FileURL shared = top->appending(".Trash");
    if (isSharedTrash(shared)) {
        if (std::optional<Place> place =
                placeAtTop(*top, shared.appending(userID()), item.ownChanges))
            places.push_back(std::move(*place));
    }
    if (places.empty()) {
        const FileURL personal = top->appending(".Trash-" + userID());
        if (std::optional<Place> place = placeAtTop(*top, personal, item.ownChanges))
            places.push_back(std::move(*place));
    }
    return places;
}

Place homePlace(const FileURL& folder, OwnChanges ownChanges)
{
    Place place{folder, FileURL::directory("/")};
    Folders::make(place.files(), forTheUserAlone, ownChanges);
    Folders::make(place.info(), forTheUserAlone, ownChanges);
    return place;
}

std::string recordedPath(const Item& item, const Place& place)
{
    const std::string& path = item.realURL.path();
    return place.top.path() == "/" ? path : path.substr(place.top.path().size() + 1);
}

enum class AcrossFileSystems { no, yes };

FileMover::Result moveFile(const Item& item, const FileURL& to, AcrossFileSystems across)
{
    if (across == AcrossFileSystems::no)
        return FileMover::moveWithinFileSystem(item.url, to, item.ownChanges);
    FileMover::move(item.url, to, item.ownChanges);
    return FileMover::Result::moved;
}

bool isKnownToBeFree(const FileURL& url)
{
    struct stat status;
    return ::lstat(url.path().c_str(), &status) != 0 && errno == ENOENT;
}

/// Where the file lies in that trash now; nothing when the trash is on another file system after all.
std::optional<FileURL> moveTo(const Place& place, const Item& item, AcrossFileSystems across)
{
    // The journal could not name the file there.
    if (!isValidUTF8(place.folder.path()))
        fail(cannotTrash, item.url, EILSEQ);
    for (int number = 1; number <= mostNames; ++number) {
        const std::string name = TrashRecord::nameInTrash(item.url.lastPathComponent(), number);
        std::optional<TrashRecord> record =
            TrashRecord::create(place.info(), name, recordedPath(item, place), item.ownChanges);
        if (!record)
            continue;
        const FileURL destination = place.files().appending(name);
        try {
            if (moveFile(item, destination, across) == FileMover::Result::otherFileSystem)
                return std::nullopt;
        } catch (const std::filesystem::filesystem_error& error) {
            // A file without a record lies there: the next name, then.
            if (error.code() == std::errc::file_exists)
                continue;
            // A copy that could not be taken back is found by its record.
            if (!isKnownToBeFree(destination))
                record->keep();
            throw;
        }
        record->keep();
        return destination;
    }
    fail(cannotTrash, item.url, EEXIST);
}

bool isOwnTrashAtTop(const FileURL& folder)
{
    return folder.lastPathComponent() == ".Trash-" + userID()
        || (folder.lastPathComponent() == userID()
            && folder.parent().lastPathComponent() == ".Trash");
}

}  // namespace

Trash::Trash(OwnChanges ownChanges)
    : Trash(StandardFolders::dataHome().appending("Trash", FileURL::Kind::directory), ownChanges)
{
}

Trash::Trash(FileURL homeTrash, OwnChanges ownChanges)
    : m_home(std::move(homeTrash))
    , m_ownChanges(ownChanges)
{
}

FileURL Trash::moveIn(const FileURL& url) const
{
    systemPath(url);
    const std::string_view name = url.lastPathComponent();
    if (name.empty() || name == "." || name == "..")
        fail(cannotTrash, url, EINVAL);
    const Item item{url, withoutLinks(url), statusOf(url).st_dev, m_ownChanges};
    requireOutsideOfTrashes(url, item.realURL);

    if (item.device == deviceOf(m_home)) {
        const Place home = homePlace(m_home, m_ownChanges);
        if (std::optional<FileURL> place = moveTo(home, item, AcrossFileSystems::no))
            return *place;
    }
    for (const Place& each : placesBeside(item)) {
        if (std::optional<FileURL> place = moveTo(each, item, AcrossFileSystems::no))
            return *place;
    }
    return *moveTo(homePlace(m_home, m_ownChanges), item, AcrossFileSystems::yes);
}

void Trash::requireOutsideOfTrashes(const FileURL& url, const FileURL& realURL) const
{
    FileURL home = m_home;
    if (Folders::isFolder(m_home.parent()))
        home = withoutLinks(m_home);
    bool isOutside =
        !isInside(realURL, home) && !isInside(home, realURL) && !isInside(realURL, m_home);
    for (FileURL folder = realURL; isOutside && folder.path() != "/"; folder = folder.parent())
        isOutside = !isOwnTrashAtTop(folder) && folder.lastPathComponent() != ".Trash";
    if (!isOutside)
        fail(cannotTrash, url, EINVAL);
}

void Trash::removeRecord(const FileURL& formerPlace) const
{
    const FileURL files = formerPlace.parent();
    const FileURL trash = files.parent();
    if (files.lastPathComponent() != "files"
        || (trash.path() != m_home.path() && !isOwnTrashAtTop(trash)))
        return;
    TrashRecord::remove(trash.appending("info"), formerPlace.lastPathComponent(), m_ownChanges);
}

}  // namespace tidemark
