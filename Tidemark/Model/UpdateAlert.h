#pragma once

#include "UpdateInfo.h"

#include <exception>
#include <string>
#include <vector>

namespace tidemark {

/// What the user is asked or told about updates. A plain value.
struct UpdateAlert {
    std::string message;
    std::string informativeText;
    std::vector<std::string> buttons;  ///< In their order; the first is the default.

    bool operator==(const UpdateAlert&) const = default;

    /// Whether to install a newer version: the first button does, the other leaves it for later.
    static UpdateAlert newVersion(const std::string& version, const std::string& running);

    static UpdateAlert upToDate(const std::string& running);

    /// Why a newer version was not installed. `downloadPage` is where it can be had, host and path.
    static UpdateAlert failure(const std::exception_ptr& error, const std::string& downloadPage);
};

}  // namespace tidemark
