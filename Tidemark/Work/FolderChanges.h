#pragma once

#include "GivenPath.h"
#include "ReplacedSettings.h"
#include "Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// What adding or removing folders came to. A plain value.
struct FolderChanges {
    std::vector<std::string> changed = {};  ///< The paths added or removed.
    std::vector<std::string> alreadyWatched = {};  ///< Asked for, but there is nothing to add.
    std::vector<WatchedFolder> folders = {};  ///< All that are watched now.
    std::optional<ReplacedSettings> replaced = {};

    void encode(JSONEncoder& encoder) const;
    static FolderChanges decode(const JSONDecoder& decoder);

    bool operator==(const FolderChanges&) const = default;
};

/// Watches more folders, each with the default rules. Throws CommandFailure when one of `paths` is no
/// folder, and what saving throws; nothing is saved then.
FolderChanges addFolders(Workspace& workspace, const std::vector<GivenPath>& paths);

/// Throws CommandFailure when one of `paths` is not watched, and what saving throws; nothing is saved then.
/// A path counts as it is stored, and cleaned.
FolderChanges removeFolders(Workspace& workspace, const std::vector<GivenPath>& paths);

/// Throws CommandFailure when `path` is not valid UTF-8, which the settings cannot hold.
void requireTextPath(const std::string& path);

/// Throws CommandFailure when one of the folders is that of Tidemark's own files: a file edited by hand
/// may say so.
void requireNoSupportFolder(const Settings& settings, const Workspace& workspace);

/// Whether Tidemark keeps its own files at `path`: sweeping them away would lose the settings.
bool isSupportFolder(const std::string& path, const Workspace& workspace);

}  // namespace tidemark
