#pragma once

#include "WatchedFolder.h"

namespace tidemark {

/// One row of the list of watched folders. A plain value.
struct WatchedFolderInfo {
    WatchedFolder folder;
    bool isGranted = false;  ///< Whether its entries could be listed at the last refresh.

    bool operator==(const WatchedFolderInfo&) const = default;
};

}  // namespace tidemark
