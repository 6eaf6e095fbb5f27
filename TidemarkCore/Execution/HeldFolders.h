#pragma once

#include "FileManager.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace tidemark {

/// The folders that a sweep or an undo has looked at. Each is held from then on: what another program
/// puts in its place, a link that leads elsewhere, say, is refused by whatever is to be done there later.
///
/// Holds some dozens of those that files come from and of those that they go to open, and starts anew
/// then, since a process may have only so many files open. The others it knows again, by device and
/// inode. For one thread; the file manager outlives it.
class HeldFolders {
public:
    explicit HeldFolders(FileManager& fileManager)
        : m_fileManager(&fileManager)
    {
    }

    /// Null when no folder stands there. Stays until the next one is found. Throws filesystem_error when it
    /// cannot tell, device_or_resource_busy when another one stands there than before.
    const HeldFolder* find(std::string_view path);

    /// Makes the folder if it is missing, below the nearest one that is held. Stays until the next one is
    /// found or made. Throws filesystem_error as `find` does, too.
    const HeldFolder& make(std::string_view path);

    /// Closes a folder that was found: an open one cannot be unmounted. It is known again.
    void letGo(std::string_view path);

private:
    using ByPath = std::map<std::string, HeldFolder, std::less<>>;

    HeldFolder recognized(HeldFolder folder);
    const HeldFolder* known(std::string_view path) const;
    const HeldFolder* nearestAbove(std::string_view path) const;

    static constexpr std::size_t mostFound = 64;
    static constexpr std::size_t mostMade = 32;

    FileManager* m_fileManager;
    ByPath m_found;
    ByPath m_made;
    std::map<std::string, HeldFolder::Identity, std::less<>> m_seen;  // by path
};

}  // namespace tidemark
