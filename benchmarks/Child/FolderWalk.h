#pragma once

#include <cstdint>
#include <string>

namespace tidemark::bench {

/// What a bare walk over a folder has seen; it makes sure that nothing is optimised away.
struct FolderWalk {
    std::uint64_t files = 0;
    std::int64_t sumOfModifiedSeconds = 0;

    /// The least there is to do to know the dates of a folder's files: readdir, and one statx for each
    /// name. Throws std::system_error.
    static FolderWalk over(const std::string& folder);
};

}  // namespace tidemark::bench
