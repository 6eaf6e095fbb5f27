#pragma once

#include "Date.h"

#include <cstddef>
#include <optional>

namespace tidemark::bench {

/// What one run of some work cost. A plain value.
struct Measured {
    Seconds wall{0};
    Seconds cpu{0};  ///< Of all threads, in user and kernel mode.
    std::optional<std::size_t> peakBytes =
        std::nullopt;  ///< Resident memory; whole processes only.
};

}  // namespace tidemark::bench
