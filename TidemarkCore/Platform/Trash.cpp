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
#include <optional>
#include <string>

namespace tidemark {

namespace {

constexpr const char* cannotTrash = "cannot move to the Trash";
constexpr mode_t forTheUserAlone = 0700;

/// So many files of one name are in a trash before it is given up.
constexpr int mostNames = 10'000;

struct stat statusOf(const HeldEntry& file)
{
    const std::optional<struct stat> status = Folders::statusOf(file);
    if (!status)
        fail(cannotTrash, file.url, errno);
    return *status;
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

struct stat statusOf(const HeldFolder& folder)
{
    struct stat status;
    if (::fstat(folder.descriptor(), &status) != 0)
        fail(cannotTrash, folder.url(), errno);
    return status;
}

/// A folder of the user's own, and no link to one; made for the user alone if nothing is there.
std::optional<HeldFolder> ownFolder(
    const HeldFolder& parent, std::string_view name, OwnChanges ownChanges)
{
    try {
        HeldFolder folder = Folders::makeIn(parent, name, forTheUserAlone, ownChanges);
        if (statusOf(folder).st_uid == ::geteuid())
            return folder;
    } catch (const std::filesystem::filesystem_error&) {
        // Another trash will do.
    }
    return std::nullopt;
}

/// A folder for the trashes of all users, which the administrator made such that nobody can take away
/// another one's. A link there may lead anywhere.
std::optional<HeldFolder> sharedTrash(const HeldFolder& top)
{
    try {
        HeldFolder folder = Folders::holdIn(top, ".Trash");
        if ((statusOf(folder).st_mode & S_ISVTX) != 0)
            return folder;
    } catch (const std::filesystem::filesystem_error&) {
        // Most file systems have none.
    }
    return std::nullopt;
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
    HeldFolder files;
    HeldFolder info;
    FileURL top;  ///< Records name their origin relative to this; the root for the home trash.
};

/// A file on its way to a trash.
struct Item {
    HeldEntry file;
    FileURL realURL;
    dev_t device;
    OwnChanges ownChanges;
};

/// The trash of this name in a folder at the top of a file system, made if it is missing; nothing if it cannot
/// be had.
std::optional<Place> placeAtTop(
    const FileURL& top, const HeldFolder& parent, const std::string& name, OwnChanges ownChanges)
{
    const std::optional<HeldFolder> trash = ownFolder(parent, name, ownChanges);
    if (!trash)
        return std::nullopt;
    std::optional<HeldFolder> files = ownFolder(*trash, "files", ownChanges);
    std::optional<HeldFolder> info = ownFolder(*trash, "info", ownChanges);
    if (!files || !info)
        return std::nullopt;
    return Place{std::move(*files), std::move(*info), top};
}

std::optional<Place> placeBeside(const Item& item)
{
    const std::optional<FileURL> top = mountPointAbove(item.realURL);
    if (!top)
        return std::nullopt;
    const HeldFolder folder = Folders::hold(*top);
    std::optional<Place> place;
    if (const std::optional<HeldFolder> shared = sharedTrash(folder))
        place = placeAtTop(*top, *shared, userID(), item.ownChanges);
    return place ? std::move(place)
                 : placeAtTop(*top, folder, ".Trash-" + userID(), item.ownChanges);
}

Place homePlace(const FileURL& folder, OwnChanges ownChanges)
{
    return {Folders::make(folder.appending("files"), forTheUserAlone, ownChanges),
        Folders::make(folder.appending("info"), forTheUserAlone, ownChanges),
        FileURL::directory("/")};
}

std::string recordedPath(const Item& item, const Place& place)
{
    const std::string& path = item.realURL.path();
    return place.top.path() == "/" ? path : path.substr(place.top.path().size() + 1);
}

enum class AcrossFileSystems { no, yes };

FileMover::Result moveFile(const Move& move, AcrossFileSystems across)
{
    if (across == AcrossFileSystems::no)
        return FileMover::moveWithinFileSystem(move);
    FileMover::move(move);
    return FileMover::Result::moved;
}

bool isKnownToBeFree(const HeldEntry& place)
{
    return !Folders::statusOf(place) && errno == ENOENT;
}

/// Where the file lies in that trash now; nothing when the trash is on another file system after all.
std::optional<FileURL> moveTo(const Place& place, const Item& item, AcrossFileSystems across)
{
    // The journal could not name the file there.
    if (!isValidUTF8(place.files.url().path()))
        fail(cannotTrash, item.file.url, EILSEQ);
    for (int number = 1; number <= mostNames; ++number) {
        const std::string name =
            TrashRecord::nameInTrash(item.file.url.lastPathComponent(), number);
        std::optional<TrashRecord> record =
            TrashRecord::create(place.info, name, recordedPath(item, place), item.ownChanges);
        if (!record)
            continue;
        const HeldEntry destination{place.files, place.files.url().appending(name)};
        try {
            if (moveFile({item.file, destination, item.ownChanges}, across)
                == FileMover::Result::otherFileSystem)
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
        return destination.url;
    }
    fail(cannotTrash, item.file.url, EEXIST);
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

FileURL Trash::moveIn(const HeldEntry& file) const
{
    systemPath(file.url);
    const std::string_view name = file.url.lastPathComponent();
    if (name.empty() || name == "." || name == "..")
        fail(cannotTrash, file.url, EINVAL);
    Folders::requireInPlace(file.folder);
    const Item item{file, withoutLinks(file.url), statusOf(file).st_dev, m_ownChanges};
    requireOutsideOfTrashes(file.url, item.realURL);

    if (item.device == deviceOf(m_home)) {
        const Place home = homePlace(m_home, m_ownChanges);
        if (std::optional<FileURL> place = moveTo(home, item, AcrossFileSystems::no))
            return *place;
    }
    if (const std::optional<Place> beside = placeBeside(item)) {
        if (std::optional<FileURL> place = moveTo(*beside, item, AcrossFileSystems::no))
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

void Trash::removeRecord(const HeldEntry& formerPlace) const
{
    const FileURL files = formerPlace.url.parent();
    const FileURL trash = files.parent();
    if (files.lastPathComponent() != "files"
        || (trash.path() != m_home.path() && !isOwnTrashAtTop(trash)))
        return;
    try {
        const HeldFolder held = Folders::hold(trash);
        if (Folders::holdBelow(held, files).identity() != formerPlace.folder.identity())
            return;
        const HeldFolder info = Folders::holdIn(held, "info");
        TrashRecord::remove(info, formerPlace.url.lastPathComponent(), m_ownChanges);
    } catch (const std::filesystem::filesystem_error&) {
        // The file is back, which is what counts.
    }
}

}  // namespace tidemark
