#include "WatchGroups.h"

#include "FanotifyGroup.h"
#include "InotifyGroup.h"
#include "WatchedDirectory.h"

#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <system_error>

namespace tidemark {

namespace {

/// Reads one number of the kernel's; the largest there is when there is no such file.
std::size_t numberIn(const char* file)
{
    std::ifstream stream{file};
    std::size_t number = 0;
    return stream >> number ? number : std::numeric_limits<std::size_t>::max();
}

std::size_t fanotifyRation()
{
    return std::min(numberIn("/proc/sys/fs/fanotify/max_user_marks"),
        numberIn("/proc/sys/user/max_fanotify_marks"));
}

std::size_t inotifyRation()
{
    return std::min(numberIn("/proc/sys/fs/inotify/max_user_watches"),
        numberIn("/proc/sys/user/max_inotify_watches"));
}

/// Whether the error is about the interface or the file system rather than this one directory.
bool isUnsupported(int error)
{
    switch (error) {
    case ENODEV:  // FUSE and others that have no identifier of their own.
    case EOPNOTSUPP:  // No file handles, such as overlayfs on older kernels.
    case EXDEV:  // A btrfs subvolume on older kernels.
    case EOVERFLOW:
    case EINVAL:
    case ENOSYS:
    case EPERM:
    case EMFILE:  // The user has no group left.
        return true;
    default:
        return false;
    }
}

}  // namespace

WatchGroups::WatchGroups(const Options& options)
    : m_options(options)
    , m_fanotifyLimit(fanotifyRation() / 2)
    , m_inotifyLimit(inotifyRation() / 4)
{
}

WatchGroups::~WatchGroups() = default;

WatchGroups::Watched WatchGroups::watch(
    int directory, Purpose purpose, const WatchedDirectory* known)
{
    // Nothing new is asked for, so that it does not matter whether there is room.
    if (known != nullptr && isFull(known->group->backend())
        && known->group->isSame(directory, known->handle))
        return {known->group, known->handle, 0, known->group->backend()};
    const std::optional<FileSystem> fileSystem = fileSystemOf(directory);
    if (!fileSystem)
        return {nullptr, {}, errno, WatchBackend::fanotify};
    Watched watched{nullptr, {}, ENOTSUP, WatchBackend::fanotify};
    if (m_options.backend != WatchBackend::inotify && !m_withoutFanotify.contains(*fileSystem)) {
        watched = watchByFanotify(directory, *fileSystem, purpose);
        const bool triesOther =
            isUnsupported(watched.error) || (purpose == Purpose::root && watched.error == ENOSPC);
        if (watched.error == 0 || !triesOther)
            return watched;
    }
    if (m_options.backend == WatchBackend::fanotify)
        return watched;
    return watchByInotify(directory, purpose);
}

WatchGroups::Watched WatchGroups::watchByFanotify(
    int directory, const FileSystem& fileSystem, Purpose purpose)
{
    std::unique_ptr<WatchGroup>& group = m_fanotify[fileSystem];
    Watched watched{nullptr, {}, 0, WatchBackend::fanotify};
    try {
        if (!group)
            group = std::make_unique<FanotifyGroup>();
        watched = watchBy(*group, directory, purpose);
    } catch (const std::system_error& error) {
        watched.error = error.code().value();
    }
    if (isUnsupported(watched.error))
        m_withoutFanotify.insert(fileSystem);
    if (!group || (watched.error != 0 && group->directoryCount() == 0))
        m_fanotify.erase(fileSystem);
    return watched;
}

WatchGroups::Watched WatchGroups::watchByInotify(int directory, Purpose purpose)
{
    try {
        if (!m_inotify)
            m_inotify = std::make_unique<InotifyGroup>(m_options.ownChanges);
        return watchBy(*m_inotify, directory, purpose);
    } catch (const std::system_error& error) {
        return {nullptr, {}, error.code().value(), WatchBackend::inotify};
    }
}

WatchGroups::Watched WatchGroups::watchBy(WatchGroup& group, int directory, Purpose purpose)
{
    const WatchBackend backend = group.backend();
    if (purpose == Purpose::below && isFull(backend) && !group.isAbandoned(directory))
        return {nullptr, {}, ENOSPC, backend};
    WatchGroup::Watched watched = group.watch(directory);
    if (watched.error != 0) {
        if (watched.error == ENOSPC)
            m_full.insert(backend);
        return {nullptr, {}, watched.error, backend};
    }
    return {&group, std::move(watched.handle), 0, backend};
}

bool WatchGroups::isFull(WatchBackend backend) const
{
    if (m_full.contains(backend))
        return true;
    std::size_t used = 0;
    for (const WatchGroup* group : groups()) {
        if (group->backend() == backend)
            used += group->directoryCount() + group->abandonedCount();
    }
    return used >= limitOf(backend);
}

std::size_t WatchGroups::limitOf(WatchBackend backend) const
{
    if (m_options.limit)
        return *m_options.limit;
    return backend == WatchBackend::fanotify ? m_fanotifyLimit : m_inotifyLimit;
}

std::vector<WatchGroup*> WatchGroups::groups() const
{
    std::vector<WatchGroup*> groups;
    for (const auto& [fileSystem, group] : m_fanotify)
        groups.push_back(group.get());
    if (m_inotify)
        groups.push_back(m_inotify.get());
    std::erase(groups, nullptr);
    return groups;
}

std::size_t WatchGroups::directoryCount() const
{
    std::size_t count = 0;
    for (const WatchGroup* group : groups())
        count += group->directoryCount();
    return count;
}

std::size_t WatchGroups::abandonedCount() const
{
    std::size_t count = 0;
    for (const WatchGroup* group : groups())
        count += group->abandonedCount();
    return count;
}

void WatchGroups::closeUnused()
{
    std::erase_if(m_fanotify, [](const auto& item) { return item.second->directoryCount() == 0; });
    if (m_inotify && m_inotify->directoryCount() == 0)
        m_inotify.reset();
    m_withoutFanotify.clear();
}

void WatchGroups::clear()
{
    m_fanotify.clear();
    m_inotify.reset();
    m_withoutFanotify.clear();
    m_full.clear();
}

std::optional<WatchGroups::FileSystem> WatchGroups::fileSystemOf(int directory)
{
    struct stat status;
    struct statfs fileSystem;
    if (::fstat(directory, &status) != 0 || ::fstatfs(directory, &fileSystem) != 0)
        return std::nullopt;
    FileSystem result{status.st_dev, 0};
    static_assert(sizeof fileSystem.f_fsid == sizeof result.id);
    std::memcpy(&result.id, &fileSystem.f_fsid, sizeof result.id);
    return result;
}

}  // namespace tidemark
