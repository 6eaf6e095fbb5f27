#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"
#include "LinkWalk.h"

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace tidemark {

/// Watches the ways that lead to the watched folders: every step of their paths, through links, so that a
/// folder that is made, deleted, renamed, unmounted or reached through another link is noticed.
///
/// The neighbours of a step are looked at only where they have to be: what happens in the folders above that
/// hold no link of the path wakes nobody. Costs a handful of inotify watches. A step that cannot be watched,
/// because the user may not read that folder or has no watch left, is left out. For one thread.
class RootPaths {
public:
    explicit RootPaths(std::vector<FileURL> folders);

    /// Follows every path anew, watching its steps; whatever changes afterwards is noticed. One result for each
    /// folder, in order.
    std::vector<LinkWalk::Result> follow();

    /// Readable when something happened; -1 if steps cannot be watched at all.
    int descriptor() const { return m_queue.get(); }

    /// Reads what happened; whether a path may lead elsewhere now.
    bool drain();

private:
    LinkWalk::Result follow(const FileURL& folder);
    LinkWalk::Result walk(const FileURL& folder);
    void watchEnd(const LinkWalk::Result& end);
    void watchName(const std::string& folder, const std::string& name, std::uint32_t more = 0);
    void watchFolder(const std::string& folder);
    bool readEvents(const char* events, std::size_t size) const;

    std::vector<FileURL> m_folders;
    FileDescriptor m_queue;
    std::unordered_map<int, std::set<std::string, std::less<>>> m_steps;
};

}  // namespace tidemark
