#include "RootPaths.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

namespace tidemark {

namespace {

constexpr std::size_t bufferSize = 16'384;

constexpr std::uint32_t folderMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_MASK_ADD;
constexpr std::uint32_t nameMask = folderMask | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

bool isForbidden(const std::string& folder)
{
    return ::faccessat(AT_FDCWD, folder.c_str(), R_OK | X_OK, AT_EACCESS) != 0 && errno == EACCES;
}

}  // namespace

RootPaths::RootPaths(std::vector<FileURL> folders)
    : m_folders(std::move(folders))
{
}

std::vector<LinkWalk::Result> RootPaths::follow()
{
    // The old watches go first, since there may be no room for both. Nothing is missed: the paths are
    // followed after the new ones are in place.
    m_queue.close();
    m_steps.clear();
    m_queue = FileDescriptor{::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)};
    std::vector<LinkWalk::Result> results;
    results.reserve(m_folders.size());
    for (const FileURL& folder : m_folders)
        results.push_back(follow(folder));
    return results;
}

LinkWalk::Result RootPaths::follow(const FileURL& folder)
{
    // Walked until a walk finds what the one before it had put watches on: whatever happens after that is
    // noticed. Nobody changes a path so often without being noticed anyway.
    constexpr int mostWalks = 10;
    LinkWalk::Result result = walk(folder);
    for (int walks = 1; walks < mostWalks; ++walks) {
        LinkWalk::Result again = walk(folder);
        if (again == result)
            break;
        result = std::move(again);
    }
    return result;
}

LinkWalk::Result RootPaths::walk(const FileURL& folder)
{
    LinkWalk::Result end = LinkWalk::follow(folder.path(),
        [&](const std::string& parent, const std::string& name, LinkWalk::Entry entry) {
            if (entry == LinkWalk::Entry::link)
                watchName(parent, name);
            else
                watchFolder(LinkWalk::entryIn(parent, name));
        });
    watchEnd(end);
    return end;
}

/// The last folder that exists is the first that can be deleted, and a folder that some program is in does not
/// tell of that itself; those above it can only be renamed, which they do tell.
void RootPaths::watchEnd(const LinkWalk::Result& end)
{
    if (end.path != "/") {
        // A folder without permission may get it back, which shows only as a change of its attributes.
        watchName(LinkWalk::parentOf(end.path), end.path.substr(end.path.rfind('/') + 1),
            isForbidden(end.path) ? IN_ATTRIB : 0U);
    }
    if (end.error != 0)
        watchName(end.path, end.missing);
}

void RootPaths::watchName(const std::string& folder, const std::string& name, std::uint32_t more)
{
    const int watch = ::inotify_add_watch(m_queue.get(), folder.c_str(), nameMask | more);
    if (watch >= 0)
        m_steps[watch].insert(name);
}

void RootPaths::watchFolder(const std::string& folder)
{
    const int watch = ::inotify_add_watch(m_queue.get(), folder.c_str(), folderMask);
    if (watch >= 0)
        m_steps[watch];
}

bool RootPaths::drain()
{
    alignas(inotify_event) std::array<char, bufferSize> buffer;
    bool isHit = false;
    while (m_queue.isOpen()) {
        const ssize_t size =
            uninterrupted([&] { return ::read(m_queue.get(), buffer.data(), buffer.size()); });
        if (size <= 0)
            break;
        isHit |= readEvents(buffer.data(), static_cast<std::size_t>(size));
    }
    return isHit;
}

bool RootPaths::readEvents(const char* events, std::size_t size) const
{
    bool isHit = false;
    std::size_t offset = 0;
    while (offset + sizeof(inotify_event) <= size) {
        inotify_event head;
        std::memcpy(&head, events + offset, sizeof head);
        const char* const bytes = events + offset + sizeof head;
        const std::string_view name{bytes, ::strnlen(bytes, head.len)};
        offset += sizeof head + head.len;
        const auto steps = m_steps.find(head.wd);
        // Without a name it is about the folder itself, or events were lost.
        isHit |= name.empty() || (steps != m_steps.end() && steps->second.contains(name));
    }
    return isHit;
}

}  // namespace tidemark
