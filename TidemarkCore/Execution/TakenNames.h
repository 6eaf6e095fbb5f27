#pragma once

#include "FileManager.h"

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace tidemark {

/// The names in folders that files were wanted at and that were found taken.
///
/// The thousandth file of one name asks the disk for one number then, not for a thousand; and where hundreds are
/// taken, all names of the folder are read at once. What another program removes meanwhile still counts as taken;
/// what this one moves away has to be told. That a name is free is always asked of the disk. For one thread.
class TakenNames {
public:
    /// `fileManager` outlives it.
    explicit TakenNames(FileManager& fileManager);

    /// Whether something is known to stand at `name` in the folder, or is found there. Throws what
    /// FileManager::fileExists throws.
    bool isTaken(const HeldFolder& folder, std::string_view name);

    /// The entry is about to go away, and no name is looked for before: its own may be among those.
    void forget(const HeldEntry& entry);

private:
    struct Order {
        bool operator()(const HeldFolder::Identity& one, const HeldFolder::Identity& other) const
        {
            return one.device != other.device ? one.device < other.device : one.inode < other.inode;
        }
    };

    struct Folder {
        std::set<std::string, std::less<>> names;
        std::size_t lookUps = 0;  // that found something
    };

    void list(const HeldFolder& folder, Folder& known);

    FileManager* m_fileManager;
    std::map<HeldFolder::Identity, Folder, Order> m_folders;
};

}  // namespace tidemark
