#pragma once

#include <string>

namespace tidemark {

/// A newer version of the application. A plain value.
struct UpdateInfo {
    std::string version = {};
    std::string url = {};  ///< Where it is fetched from.
    std::string notes = {};  ///< What is new, for people.

    bool operator==(const UpdateInfo&) const = default;
};

}  // namespace tidemark
