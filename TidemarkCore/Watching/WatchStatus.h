#pragma once

#include "FileURL.h"
#include "WatchBackend.h"

#include <optional>
#include <system_error>

namespace tidemark {

/// How far one watched folder is watched.
struct WatchStatus {
    enum class Coverage {
        none,  ///< It cannot be watched now, or does not exist; it is taken up when that changes.
        partial,  ///< It is, but not everything below it; also while the folders below are being looked up.
        full,
    };

    FileURL folder;  ///< As given.
    Coverage coverage = Coverage::none;
    std::optional<WatchBackend> backend;  ///< Present unless the coverage is `none`.
    std::error_code reason;  ///< Why it is not full; empty while folders are being looked up.

    bool operator==(const WatchStatus&) const = default;
};

}  // namespace tidemark
