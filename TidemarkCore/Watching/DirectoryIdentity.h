#pragma once

#include <sys/types.h>

#include <compare>

namespace tidemark {

/// Names a directory, whatever path leads to it, for as long as it exists.
struct DirectoryIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    auto operator<=>(const DirectoryIdentity&) const = default;
};

}  // namespace tidemark
