#pragma once

#include "CleanPath.h"

#include <string>

namespace tidemark {

/// A path as the user gave it, and what it means in the folder where he gave it. A plain value.
struct GivenPath {
    std::string asGiven;
    std::string clean;

    /// Throws filesystem_error when a relative path is given and there is no working folder.
    static GivenPath of(std::string path)
    {
        std::string clean = cleanAbsolutePath(path);
        return {.asGiven = std::move(path), .clean = std::move(clean)};
    }

    bool operator==(const GivenPath&) const = default;
};

}  // namespace tidemark
