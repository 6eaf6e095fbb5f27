#pragma once

#include "FileURL.h"
#include "LaunchOptions.h"

#include <string>

namespace tidemark {

/// What a second start has to offer to the one that runs. A plain value.
struct HandOver {
    LaunchOptions options = {};
    std::string activationToken = {};  ///< The right to take the focus, on Wayland.

    /// Has the process that serves the support folder come to the front, or do what this one was asked
    /// for. It goes through the folder's socket, so that no session bus is needed. Throws CommandFailure
    /// with the reason, such as that it is `tidemarkctl watch`, which has no windows; and
    /// filesystem_error.
    void carryOut(const FileURL& supportFolder) const;
};

}  // namespace tidemark
