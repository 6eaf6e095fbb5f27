#pragma once

#include <cstdint>
#include <optional>

namespace tidemark {

/// How much of a newer version has been downloaded, in bytes. A plain value.
struct UpdateProgress {
    std::int64_t received = 0;
    std::optional<std::int64_t> total = {};  ///< As far as the server says.

    bool operator==(const UpdateProgress&) const = default;
};

}  // namespace tidemark
