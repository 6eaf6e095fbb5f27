#pragma once

#include "TemporaryFolder.h"

#include <memory>
#include <optional>
#include <string>

namespace tidemark::bench {

/// Where disk work is done. A value; the folder goes away with the last copy.
struct Place {
    std::string name;  ///< The kind of file system, such as "ext4" or "tmpfs".
    std::shared_ptr<const TemporaryFolder> folder;

    /// Throws filesystem_error when nothing can be written there.
    static Place in(const FileURL& parent);

    /// The place in memory; nothing when there is none that could be written to.
    static std::optional<Place> inMemory();

    bool isInMemory() const { return name == "tmpfs"; }

    /// Brings everything that was prepared here to the disk, so that no later flush pays for it.
    void flush() const;
};

}  // namespace tidemark::bench
