#include "FanotifyGroup.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <sys/fanotify.h>
#include <unistd.h>

#include <array>
#include <cstring>

#ifndef AT_HANDLE_FID
#define AT_HANDLE_FID 0x200
#endif

namespace tidemark {

namespace {

constexpr std::size_t bufferSize = 65'536;
constexpr int mostReadsInARow = 64;

constexpr unsigned groupFlags = FAN_CLASS_NOTIF | FAN_REPORT_DFID_NAME | FAN_CLOEXEC | FAN_NONBLOCK;

constexpr std::uint64_t entryChanges = FAN_CREATE | FAN_DELETE | FAN_MOVED_FROM | FAN_MOVED_TO
    | FAN_CLOSE_WRITE | FAN_MODIFY | FAN_ATTRIB;
constexpr std::uint64_t markMask = entryChanges | FAN_DELETE_SELF | FAN_EVENT_ON_CHILD | FAN_ONDIR;

/// The part of the file handle that identifies the directory: its type and bytes. The file system is the same
/// for the whole group.
std::string handleText(int type, const char* bytes, std::size_t size)
{
    std::string text(sizeof type, '\0');
    std::memcpy(text.data(), &type, sizeof type);
    return text.append(bytes, size);
}

int nameToHandle(int directory, file_handle* handle, int flags)
{
    int mount = 0;
    handle->handle_bytes = MAX_HANDLE_SZ;
    return ::name_to_handle_at(directory, "", handle, &mount, AT_EMPTY_PATH | flags);
}

/// Empty, with errno set, if the directory has none.
std::string handleOf(int directory)
{
    alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> space;
    auto* const handle = reinterpret_cast<file_handle*>(space.data());
    // Kernels before 6.5 do not know the flag, which lets more file systems answer.
    if (nameToHandle(directory, handle, AT_HANDLE_FID) != 0
        && nameToHandle(directory, handle, 0) != 0)
        return {};
    const char* const bytes = space.data() + sizeof(file_handle);
    return handleText(handle->handle_type, bytes, handle->handle_bytes);
}

int mark(const FileDescriptor& queue, unsigned operation, int directory)
{
    return uninterrupted([&] {
        return ::fanotify_mark(
            queue.get(), operation | FAN_MARK_ONLYDIR, markMask, directory, nullptr);
    });
}

template <typename Value>
Value valueAt(const std::vector<char>& buffer, std::size_t offset)
{
    Value value;
    std::memcpy(&value, buffer.data() + offset, sizeof value);
    return value;
}

/// What follows the head of an event: the directory's handle and, after it, the entry's name.
struct EntryRecord {
    std::string handle;
    std::string_view name;
};

/// Reads the record at `offset`, which is `size` bytes long.
EntryRecord entryRecord(const std::vector<char>& buffer, std::size_t offset, std::size_t size)
{
    const std::size_t handleAt = offset + sizeof(fanotify_event_info_fid);
    const std::size_t bytesAt = handleAt + sizeof(file_handle);
    unsigned handleSize = 0;
    int type = 0;
    std::memcpy(&handleSize, buffer.data() + handleAt, sizeof handleSize);
    std::memcpy(&type, buffer.data() + handleAt + sizeof handleSize, sizeof type);
    const std::size_t nameAt = bytesAt + handleSize;
    EntryRecord record;
    record.handle = handleText(type, buffer.data() + bytesAt, handleSize);
    // The name ends in a NUL, and the record is padded with more of them.
    if (nameAt < offset + size)
        record.name = {
            buffer.data() + nameAt, ::strnlen(buffer.data() + nameAt, offset + size - nameAt)};
    return record;
}

}  // namespace

FanotifyGroup::FanotifyGroup()
    : WatchGroup(WatchBackend::fanotify)
    , m_queue(::fanotify_init(groupFlags, O_RDONLY | O_CLOEXEC))
    , m_process(::getpid())
    , m_buffer(bufferSize)
{
    if (!m_queue.isOpen())
        throw std::system_error{systemError(errno), "cannot make a fanotify group"};
}

WatchGroup::Watched FanotifyGroup::watch(int directory)
{
    if (mark(m_queue, FAN_MARK_ADD, directory) != 0)
        return {{}, errno};
    Watched watched{handleOf(directory), 0};
    if (watched.handle.empty()) {
        watched.error = errno;
        mark(m_queue, FAN_MARK_REMOVE, directory);
    }
    m_abandoned.erase(watched.handle);
    return watched;
}

bool FanotifyGroup::isSame(int directory, const std::string& handle) const
{
    return handleOf(directory) == handle;
}

void FanotifyGroup::abandon(const std::string& handle)
{
    // A mark can be removed only by way of its directory, and nobody says where that has gone.
    m_abandoned.insert(handle);
}

bool FanotifyGroup::isAbandoned(int directory) const
{
    return !m_abandoned.empty() && m_abandoned.contains(handleOf(directory));
}

void FanotifyGroup::unwatch(int directory, const std::string& handle)
{
    mark(m_queue, FAN_MARK_REMOVE, directory);
    m_abandoned.erase(handle);
}

WatchGroup::Drained FanotifyGroup::drain(const Sink& sink)
{
    Drained drained;
    for (int reads = 0; reads < mostReadsInARow; ++reads) {
        const ssize_t size =
            uninterrupted([&] { return ::read(m_queue.get(), m_buffer.data(), m_buffer.size()); });
        if (size <= 0)
            return drained;
        readEvents(static_cast<std::size_t>(size), sink, drained);
    }
    drained.isEmptied = false;
    return drained;
}

/// An event of the directory itself calls it ".". Of those only its attributes matter, of which its parent is
/// not told.
bool FanotifyGroup::isAboutEntry(
    const std::string& handle, std::string_view name, std::uint64_t mask) const
{
    return name != "."
        || ((mask & FAN_ATTRIB) != 0 && (mask & FAN_DELETE_SELF) == 0
            && !m_abandoned.contains(handle));
}

void FanotifyGroup::readEvents(std::size_t size, const Sink& sink, Drained& drained)
{
    std::size_t offset = 0;
    while (offset + sizeof(fanotify_event_metadata) <= size) {
        const auto length = valueAt<fanotify_event_metadata>(m_buffer, offset).event_len;
        readEvent(offset, length, sink, drained);
        offset += length;
    }
}

void FanotifyGroup::readEvent(
    std::size_t offset, std::size_t size, const Sink& sink, Drained& drained)
{
    const auto head = valueAt<fanotify_event_metadata>(m_buffer, offset);
    ++drained.events;
    drained.hasOverflowed |= (head.mask & FAN_Q_OVERFLOW) != 0;
    if (size < head.metadata_len + sizeof(fanotify_event_info_fid) + sizeof(file_handle))
        return;
    const EntryRecord record =
        entryRecord(m_buffer, offset + head.metadata_len, size - head.metadata_len);
    WatchEvent event;
    event.handle = record.handle;
    event.isDirectory = (head.mask & FAN_ONDIR) != 0;
    event.isOwn = head.pid == m_process;
    event.isGone = (head.mask & FAN_DELETE_SELF) != 0;
    if (isAboutEntry(record.handle, record.name, head.mask))
        event.name = record.name;
    sink(event);
    if (event.isGone)
        m_abandoned.erase(record.handle);
}

}  // namespace tidemark
