#pragma once

#include "FileURL.h"
#include "LaunchOptions.h"

#include <string>

namespace tidemark {

/// What a second start has to offer to the one that runs. A plain value.
struct HandOver {
    LaunchOptions options;
    std::string activationToken = {};  ///< The right to take the focus, on Wayland.

    /// Has the running application come to the front, or do what this one was asked for. Without a session bus,
    /// and where it is `tidemarkctl watch` that runs, an action goes through the support folder's socket.
    /// Throws CommandFailure with the reason, and filesystem_error.
    void carryOut() const;
};

}  // namespace tidemark
