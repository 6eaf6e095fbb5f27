#include "InotifyGroup.h"

#include "SystemCall.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <optional>

namespace tidemark {

namespace {

constexpr std::size_t bufferSize = 65'536;
constexpr int mostReadsInARow = 64;

constexpr std::uint32_t entryChanges =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB;
constexpr std::uint32_t watchMask = entryChanges | IN_ONLYDIR | IN_EXCL_UNLINK;

std::string handleText(int watch)
{
    std::string text(sizeof watch, '\0');
    std::memcpy(text.data(), &watch, sizeof watch);
    return text;
}

int watchOf(const std::string& handle)
{
    int watch = -1;
    std::memcpy(&watch, handle.data(), sizeof watch);
    return watch;
}

std::optional<DirectoryIdentity> identityOf(int directory)
{
    struct stat status;
    if (::fstat(directory, &status) != 0)
        return std::nullopt;
    return DirectoryIdentity{status.st_dev, status.st_ino};
}

}  // namespace

InotifyGroup::InotifyGroup(OwnChangeLog* ownChanges)
    : WatchGroup(WatchBackend::inotify)
    , m_queue(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    , m_buffer(bufferSize)
{
    if (!m_queue.isOpen())
        throw std::system_error{systemError(errno), "cannot make an inotify instance"};
    if (ownChanges != nullptr)
        m_ownChanges = std::make_unique<OwnChangeLog::Reader>(*ownChanges);
}

WatchGroup::Watched InotifyGroup::watch(int directory)
{
    const std::optional<DirectoryIdentity> identity = identityOf(directory);
    if (!identity)
        return {{}, errno};
    const std::string path = "/proc/self/fd/" + std::to_string(directory);
    const int watch =
        uninterrupted([&] { return ::inotify_add_watch(m_queue.get(), path.c_str(), watchMask); });
    if (watch < 0)
        return {{}, errno};
    m_identities[watch] = *identity;
    return {handleText(watch), 0};
}

bool InotifyGroup::isSame(int directory, const std::string& handle) const
{
    const auto known = m_identities.find(watchOf(handle));
    return known != m_identities.end() && identityOf(directory) == known->second;
}

void InotifyGroup::abandon(const std::string& handle)
{
    // It fails, harmlessly, for a directory that no longer exists: the kernel has ended the watch itself.
    ::inotify_rm_watch(m_queue.get(), watchOf(handle));
    m_identities.erase(watchOf(handle));
}

void InotifyGroup::unwatch(int /*directory*/, const std::string& handle)
{
    abandon(handle);
}

WatchGroup::Drained InotifyGroup::drain(const Sink& sink)
{
    Drained drained;
    if (m_ownChanges)
        m_ownChanges->beginDrain();
    for (int reads = 0; reads < mostReadsInARow; ++reads) {
        const ssize_t size =
            uninterrupted([&] { return ::read(m_queue.get(), m_buffer.data(), m_buffer.size()); });
        if (size <= 0) {
            if (m_ownChanges)
                m_ownChanges->endDrain();
            return drained;
        }
        readEvents(static_cast<std::size_t>(size), sink, drained);
    }
    drained.isEmptied = false;
    return drained;
}

void InotifyGroup::readEvents(std::size_t size, const Sink& sink, Drained& drained)
{
    std::size_t offset = 0;
    while (offset + sizeof(inotify_event) <= size) {
        inotify_event head;
        std::memcpy(&head, m_buffer.data() + offset, sizeof head);
        const char* const name = m_buffer.data() + offset + sizeof head;
        offset += sizeof head + head.len;
        ++drained.events;
        drained.hasOverflowed |= (head.mask & IN_Q_OVERFLOW) != 0;
        const std::string handle = handleText(head.wd);
        WatchEvent event;
        event.handle = handle;
        event.name = {name, ::strnlen(name, head.len)};
        event.isDirectory = (head.mask & IN_ISDIR) != 0;
        event.isOwn = isOwn(head.wd, event.name);
        // The kernel has ended the watch: the directory was deleted or its file system unmounted.
        event.isGone = (head.mask & IN_IGNORED) != 0;
        sink(event);
    }
}

bool InotifyGroup::isOwn(int watch, std::string_view name) const
{
    if (!m_ownChanges)
        return false;
    const auto identity = m_identities.find(watch);
    return identity != m_identities.end() && m_ownChanges->isOwn(identity->second, name);
}

}  // namespace tidemark
