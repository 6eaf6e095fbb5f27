#pragma once

#include "Date.h"

#include <cstdint>
#include <optional>

namespace tidemark {

/// Whether a cloud client keeps the file's content on this machine.
enum class CloudStatus { notInCloud, notDownloaded, downloaded };

/// What the file system says of one entry; a fact that it does not keep is absent.
struct FileFacts {
    bool isRegularFile = false;  ///< False for folders, links, devices; a link is not followed.
    CloudStatus cloudStatus = CloudStatus::notInCloud;
    bool isScreenCapture = false;
    std::optional<Date> modified;
    std::optional<Date> added;  ///< When the entry came into its folder.
    std::optional<Date> lastOpened;
    std::optional<Date> created;

    bool operator==(const FileFacts&) const = default;
};

/// Tells whether a path still leads to the same, unchanged file. Compared, never shown.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::int64_t changedNanoseconds = 0;

    bool operator==(const FileIdentity&) const = default;
};

}  // namespace tidemark
