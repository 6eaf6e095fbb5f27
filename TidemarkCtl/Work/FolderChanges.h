#pragma once

#include "Workspace.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tidemark {

/// What adding or removing folders came to. A plain value.
struct FolderChanges {
    std::vector<std::string> changed = {};  ///< The paths added or removed.
    std::vector<std::string> alreadyWatched = {};  ///< Asked for, but there is nothing to add.
    std::vector<WatchedFolder> folders = {};  ///< All that are watched now.
    std::optional<Workspace::ReplacedSettings> replaced = {};
};

/// Watches more folders, each with the default rules. Throws CommandFailure when one of `paths` is no
/// folder, and what saving throws; nothing is saved then.
FolderChanges addFolders(Workspace& workspace, std::span<const std::string> paths);

/// Throws CommandFailure when one of `paths` is not watched, and what saving throws; nothing is saved then.
/// A path counts as it is stored, and cleaned.
FolderChanges removeFolders(Workspace& workspace, std::span<const std::string> paths);

}  // namespace tidemark
