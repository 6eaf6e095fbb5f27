#pragma once

#include "FileURL.h"

#include <vector>

namespace tidemark {

/// Asks the user for folders. For the main thread.
class FolderChooser {
public:
    virtual ~FolderChooser() = default;

    /// The folders that the user chose, in his order; none if he thought better of it. Returns when he is
    /// done.
    virtual std::vector<FileURL> chooseFolders() = 0;
};

/// Where there is nobody to ask.
class NoFolderChooser final : public FolderChooser {
public:
    std::vector<FileURL> chooseFolders() override { return {}; }
};

}  // namespace tidemark
