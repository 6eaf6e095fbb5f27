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
/// Holds some dozens at most and starts anew then, since a process may have only so many files open. For
/// one thread; the file manager outlives it.
class HeldFolders {
public:
    explicit HeldFolders(FileManager& fileManager)
        : m_fileManager(&fileManager)
    {
    }

    /// Null when no folder stands there. May let go of all that were found or made before. Throws
    /// filesystem_error when it cannot tell.
    const HeldFolder* find(std::string_view path);

    /// Makes the folder if it is missing, below the nearest one that is held. Throws filesystem_error.
    const HeldFolder& make(std::string_view path);

private:
    const HeldFolder* nearestAbove(std::string_view path) const;

    static constexpr std::size_t mostHeld = 64;

    FileManager* m_fileManager;
    std::map<std::string, HeldFolder, std::less<>> m_folders;  // by path
};

}  // namespace tidemark
