#include "WatchedTrees.h"

#include "SystemCall.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace tidemark {

namespace {

constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Marks of folders that have left the trees stay in the kernel; beyond this many, and more than half of all,
/// everything is watched anew to be rid of them.
constexpr std::size_t mostAbandoned = 1024;

timespec timeOfDay()
{
    timespec now;
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

bool isLater(const timespec& one, const timespec& other)
{
    return std::tie(one.tv_sec, one.tv_nsec) > std::tie(other.tv_sec, other.tv_nsec);
}

FileDescriptor openAt(int folder, const char* name)
{
    return FileDescriptor{uninterrupted([&] { return ::openat(folder, name, openFlags); })};
}

bool isDirectory(int folder, const dirent& entry)
{
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat status;
    return ::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0
        && S_ISDIR(status.st_mode);
}

/// The folders in `folder`, whose reading position is used up.
std::set<std::string> foldersIn(const FileDescriptor& folder)
{
    std::set<std::string> names;
    // A descriptor of its own, because closing the listing closes it.
    FileDescriptor listed = openAt(folder.get(), ".");
    DIR* const listing = ::fdopendir(listed.get());
    if (listing == nullptr)
        return names;
    listed.release();
    while (const dirent* const entry = ::readdir(listing)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && isDirectory(folder.get(), *entry))
            names.emplace(name);
    }
    ::closedir(listing);
    return names;
}

/// Whether nothing of that name is there to be watched, as opposed to something that cannot be.
bool isAbsence(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

}  // namespace

WatchedTrees::WatchedTrees(std::vector<FileURL> folders, const WatchGroups::Options& options)
    : m_groups(options)
    , m_watchingSince(timeOfDay())
{
    for (FileURL& folder : folders)
        m_roots.push_back({std::move(folder), {}, nullptr, ENOENT});
}

WatchedTrees::~WatchedTrees() = default;

void WatchedTrees::follow(const std::vector<LinkWalk::Result>& paths)
{
    m_hasLoss = false;
    // All that is to go goes first: a folder may come to stand below another one.
    for (std::size_t i = 0; i < m_roots.size(); ++i) {
        if (!isUnchanged(m_roots[i], paths[i]))
            detach(m_roots[i]);
        m_roots[i].path = paths[i];
    }
    m_groups.closeUnused();
    for (Root& root : m_roots) {
        if (!root.directory)
            attach(root);
    }
    m_isFollowing = true;
    m_isStatusNew = true;
}

bool WatchedTrees::isUnchanged(const Root& root, const LinkWalk::Result& path) const
{
    if (!root.directory || path.error != 0 || root.path.path != path.path)
        return false;
    const FileDescriptor folder = openAt(AT_FDCWD, path.path.c_str());
    return folder.isOpen() && root.directory->group->isSame(folder.get(), root.directory->handle);
}

void WatchedTrees::detach(Root& root)
{
    const std::shared_ptr<WatchedDirectory> directory = std::exchange(root.directory, nullptr);
    if (!directory)
        return;
    m_hasChange = true;
    const auto sharing = std::ranges::find(m_roots, directory, &Root::directory);
    if (sharing == m_roots.end()) {
        drop(*directory, Watch::abandon);
    } else {
        directory->name = sharing->path.path;
    }
}

void WatchedTrees::attach(Root& root)
{
    root.error = root.path.error;
    if (root.error != 0)
        return;
    const FileDescriptor folder = openAt(AT_FDCWD, root.path.path.c_str());
    if (!folder.isOpen()) {
        root.error = errno;
        return;
    }
    WatchGroups::Watched watched = watchRoot(folder.get());
    root.error = watched.error;
    if (watched.error != 0)
        return;
    m_hasChange |= m_isFollowing;
    WatchedDirectory* const known = watched.group->find(watched.handle);
    if (known != nullptr && isRoot(*known)) {
        root.directory = known->shared_from_this();
        return;
    }
    if (known != nullptr)
        drop(*known, Watch::keep);
    root.directory = std::make_shared<WatchedDirectory>();
    root.directory->name = root.path.path;
    root.directory->group = watched.group;
    root.directory->handle = std::move(watched.handle);
    watched.group->assign(root.directory->handle, *root.directory);
    enqueue(*root.directory);
}

WatchGroups::Watched WatchedTrees::watchRoot(int directory)
{
    for (;;) {
        WatchGroups::Watched watched =
            m_groups.watch(directory, WatchGroups::Purpose::root, nullptr);
        if (watched.error != ENOSPC)
            return watched;
        m_limits.insert(watched.backend);
        if (!makeRoom())
            return watched;
    }
}

/// Gives up a folder far down, whose watch a top folder needs more. False if there is none.
bool WatchedTrees::makeRoom()
{
    for (const Root& root : m_roots) {
        WatchedDirectory* directory = root.directory.get();
        while (directory != nullptr && !directory->children.empty())
            directory = directory->children.rbegin()->get();
        if (directory == nullptr || isRoot(*directory))
            continue;
        WatchedDirectory& parent = *directory->parent;
        const std::shared_ptr<WatchedDirectory> victim = directory->shared_from_this();
        const FileDescriptor opened = open(*victim);
        drop(*victim, Watch::abandon);
        if (opened.isOpen())
            victim->group->unwatch(opened.get(), victim->handle);
        noteUnwatched(parent, ENOSPC);
        return true;
    }
    return false;
}

void WatchedTrees::rebuild()
{
    for (Root& root : m_roots)
        root.directory.reset();
    m_queue.clear();
    m_unwatched.clear();
    m_groups.clear();
    m_hasRoom = false;
    m_hasChange = true;
    m_watchingSince = timeOfDay();
    for (Root& root : m_roots)
        attach(root);
}

void WatchedTrees::mountChanged(const std::string& path)
{
    for (const Root& root : m_roots) {
        if (!root.directory)
            continue;
        const std::string prefix = root.directory->name == "/" ? "/" : root.directory->name + '/';
        if (!path.starts_with(prefix))
            continue;
        WatchedDirectory* directory = root.directory.get();
        std::string_view rest = std::string_view{path}.substr(prefix.size());
        for (std::size_t slash = rest.find('/');
             slash != std::string_view::npos && directory != nullptr; slash = rest.find('/')) {
            directory = directory->child(rest.substr(0, slash)).get();
            rest.remove_prefix(slash + 1);
        }
        if (directory == nullptr || rest.empty())
            continue;
        m_hasChange = true;
        lookUp(*directory, rest);
    }
}

std::vector<int> WatchedTrees::descriptors() const
{
    std::vector<int> descriptors;
    for (const WatchGroup* group : m_groups.groups())
        descriptors.push_back(group->descriptor());
    return descriptors;
}

WatchedTrees::Drained WatchedTrees::drain()
{
    Drained all;
    bool hasOverflowed = false;
    for (WatchGroup* group : m_groups.groups()) {
        const WatchGroup::Drained drained =
            group->drain([&](const WatchEvent& event) { takeIn(*group, event); });
        all.events += drained.events;
        all.isEmptied &= drained.isEmptied;
        hasOverflowed |= drained.hasOverflowed;
    }
    const std::size_t abandoned = m_groups.abandonedCount();
    if (hasOverflowed || (abandoned > mostAbandoned && abandoned > m_groups.directoryCount()))
        rebuild();
    else
        retryUnwatched();
    return all;
}

void WatchedTrees::takeIn(WatchGroup& group, const WatchEvent& event)
{
    WatchedDirectory* const directory = group.find(event.handle);
    const bool isAboutItself = event.name == ".";
    if (directory != nullptr && event.isGone)
        drop(*directory, Watch::abandon);
    if (event.name.empty() || (directory == nullptr && !isAboutItself))
        return;
    m_hasChange |= !event.isOwn;
    if (directory == nullptr) {
        // A folder that could not be watched; perhaps it can be read now.
        m_hasRoom = true;
    } else if (event.isDirectory && !isAboutItself) {
        // An own change must reach the tree as well.
        lookUp(*directory, event.name);
    }
}

void WatchedTrees::lookUp(WatchedDirectory& directory, std::string_view name)
{
    const FileDescriptor opened = open(directory);
    // It is being moved: looked at again when the events of that are taken in.
    if (!opened.isOpen())
        enqueue(directory);
    else
        lookUp(directory, opened, std::string{name});
}

void WatchedTrees::lookUp(
    WatchedDirectory& directory, const FileDescriptor& opened, const std::string& name)
{
    const std::shared_ptr<WatchedDirectory> known = directory.child(name);
    const FileDescriptor entry = openAt(opened.get(), name.c_str());
    if (!entry.isOpen()) {
        noteMissing(directory, name, errno);
        return;
    }
    WatchGroups::Watched watched =
        m_groups.watch(entry.get(), WatchGroups::Purpose::below, known.get());
    if (watched.error != 0) {
        if (watched.error == ENOSPC)
            m_limits.insert(watched.backend);
        noteMissing(directory, name, watched.error);
        return;
    }
    if (known && known->group == watched.group && known->handle == watched.handle)
        return;
    if (known) {
        drop(*known, Watch::abandon);
        // The new folder may have stood below the old one, and its watch went with that.
        watched = m_groups.watch(entry.get(), WatchGroups::Purpose::below, nullptr);
        if (watched.error != 0) {
            noteUnwatched(directory, watched.error);
            return;
        }
    }
    noteOlderChange(entry.get());
    adopt(directory, name, std::move(watched));
}

void WatchedTrees::noteMissing(WatchedDirectory& directory, const std::string& name, int error)
{
    if (const std::shared_ptr<WatchedDirectory> known = directory.child(name))
        drop(*known, Watch::abandon);
    if (!isAbsence(error))
        noteUnwatched(directory, error);
}

void WatchedTrees::adopt(
    WatchedDirectory& directory, const std::string& name, WatchGroups::Watched watched)
{
    WatchedDirectory* const known = watched.group->find(watched.handle);
    // A watched folder inside another one, or the folder itself mounted once more below it.
    if (known != nullptr && (isRoot(*known) || directory.isWithin(*known))) {
        noteUnwatched(directory, EEXIST);
        return;
    }
    // It was moved here; what is below it is read again.
    if (known != nullptr)
        drop(*known, Watch::keep);
    WatchedDirectory& added = directory.add(name, *watched.group, std::move(watched.handle));
    watched.group->assign(added.handle, added);
    enqueue(added);
}

/// While the folders that are there already are being looked up, one that was changed after the start,
/// and before its watch was in place, shows it by its times.
void WatchedTrees::noteOlderChange(int directory)
{
    struct stat status;
    if (m_watchingSince && ::fstat(directory, &status) == 0)
        m_hasChange |= isLater(status.st_ctim, *m_watchingSince);
}

void WatchedTrees::scan(std::size_t count)
{
    for (; count > 0 && !m_queue.empty(); --count) {
        const std::shared_ptr<WatchedDirectory> directory = m_queue.front().lock();
        m_queue.pop_front();
        // It may have been dropped while it waited.
        if (directory && directory->isQueued) {
            directory->isQueued = false;
            read(*directory);
        }
    }
    if (m_queue.empty())
        m_watchingSince.reset();
}

void WatchedTrees::read(WatchedDirectory& directory)
{
    const FileDescriptor opened = open(directory);
    if (!opened.isOpen())
        return;
    // There was no room before, and there still is none: spares reading it in vain.
    if (directory.unwatchedReason == ENOSPC && m_groups.isFull(directory.group->backend()))
        return;
    directory.unwatchedReason = 0;
    m_unwatched.erase(directory.weak_from_this());
    m_isStatusNew = true;
    std::set<std::string> names = foldersIn(opened);
    for (const std::shared_ptr<WatchedDirectory>& child : directory.children)
        names.insert(child->name);
    for (const std::string& name : names) {
        if (directory.unwatchedReason != ENOSPC || directory.child(name))
            lookUp(directory, opened, name);
    }
}

void WatchedTrees::enqueue(WatchedDirectory& directory)
{
    if (!std::exchange(directory.isQueued, true))
        m_queue.push_back(directory.weak_from_this());
}

void WatchedTrees::noteUnwatched(WatchedDirectory& directory, int error)
{
    // That there is no room matters more than what else may be wrong.
    if (directory.unwatchedReason != ENOSPC)
        directory.unwatchedReason = error;
    m_isStatusNew = true;
    m_unwatched.insert(directory.weak_from_this());
}

void WatchedTrees::retryUnwatched()
{
    if (!std::exchange(m_hasRoom, false))
        return;
    for (const std::weak_ptr<WatchedDirectory>& waiting : m_unwatched) {
        if (const std::shared_ptr<WatchedDirectory> directory = waiting.lock())
            enqueue(*directory);
    }
}

void WatchedTrees::drop(WatchedDirectory& directory, Watch watch)
{
    const std::shared_ptr<WatchedDirectory> kept = directory.shared_from_this();
    for (Root& root : m_roots) {
        if (root.directory == kept) {
            root.directory.reset();
            root.error = ENOENT;
            m_hasLoss = true;
            m_hasChange = true;
        }
    }
    m_isStatusNew = true;
    directory.detach();
    release(directory, watch);
    m_groups.noteRoom();
    m_hasRoom = true;
}

void WatchedTrees::release(WatchedDirectory& directory, Watch watch)
{
    directory.group->unassign(directory.handle, directory);
    if (watch == Watch::abandon)
        directory.group->abandon(directory.handle);
    directory.isQueued = false;
    m_unwatched.erase(directory.weak_from_this());
    for (const std::shared_ptr<WatchedDirectory>& child : directory.children)
        release(*child, Watch::abandon);
}

FileDescriptor WatchedTrees::open(const WatchedDirectory& directory)
{
    FileDescriptor opened = openAt(AT_FDCWD, directory.path().c_str());
    if (opened.isOpen() && !directory.group->isSame(opened.get(), directory.handle))
        opened.close();
    return opened;
}

bool WatchedTrees::takeChange()
{
    return std::exchange(m_hasChange, false);
}

std::set<WatchBackend> WatchedTrees::takeLimits()
{
    return std::exchange(m_limits, {});
}

bool WatchedTrees::takeStatusChange()
{
    return !isScanning() && std::exchange(m_isStatusNew, false);
}

std::vector<WatchStatus> WatchedTrees::status() const
{
    std::map<const WatchedDirectory*, int> reasons;
    for (const std::weak_ptr<WatchedDirectory>& waiting : m_unwatched) {
        const std::shared_ptr<WatchedDirectory> directory = waiting.lock();
        // Watched as a part of another tree.
        if (directory && directory->unwatchedReason != EEXIST)
            reasons[&directory->top()] = directory->unwatchedReason;
    }
    std::vector<WatchStatus> result;
    for (const Root& root : m_roots) {
        WatchStatus status{root.folder, WatchStatus::Coverage::none, std::nullopt, {}};
        if (root.directory) {
            const auto reason = reasons.find(root.directory.get());
            const bool isPartial = isScanning() || reason != reasons.end();
            status.coverage =
                isPartial ? WatchStatus::Coverage::partial : WatchStatus::Coverage::full;
            status.backend = root.directory->group->backend();
            if (reason != reasons.end())
                status.reason = systemError(reason->second);
        } else {
            status.reason = systemError(root.error);
        }
        result.push_back(std::move(status));
    }
    return result;
}

}  // namespace tidemark
