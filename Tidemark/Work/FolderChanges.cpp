#include "FolderChanges.h"

#include "CommandFailure.h"
#include "NewFolder.h"
#include "Text.h"

#include <algorithm>
#include <filesystem>

namespace tidemark {

namespace {

/// Whether a stored path means the folder at `cleanPath`; a file edited by hand may hold any form.
bool isSame(const WatchedFolder& folder, const std::string& cleanPath)
{
    return folder.path == cleanPath
        || (folder.path.starts_with('/') && cleanAbsolutePath(folder.path) == cleanPath);
}

bool isWatched(const std::string& cleanPath, const std::vector<WatchedFolder>& folders)
{
    return std::ranges::any_of(
        folders, [&](const WatchedFolder& folder) { return isSame(folder, cleanPath); });
}

bool contains(const std::vector<std::string>& paths, const std::string& path)
{
    return std::ranges::find(paths, path) != paths.end();
}

void requireNoSupportFolder(const std::string& path, const Workspace& workspace)
{
    if (isSupportFolder(path, workspace))
        throw CommandFailure{"cannot watch " + path + ": Tidemark keeps its own files there"};
}

void requireFolder(const std::string& path, FileManager& fileManager)
{
    const FileURL url = FileURL::directory(path);
    requireTextPath(path);
    if (!fileManager.fileExists(url))
        throw CommandFailure{"cannot watch " + path + ": there is no such folder"};
    if (!fileManager.directoryExists(url))
        throw CommandFailure{"cannot watch " + path + ": it is not a folder"};
}

/// The stored paths that `path` stands for.
std::vector<std::string> watchedPaths(
    const GivenPath& path, const Workspace& workspace, const std::vector<WatchedFolder>& folders)
{
    std::vector<std::string> found;
    for (const WatchedFolder& folder : folders) {
        if (folder.path == path.asGiven || isSame(folder, path.clean))
            found.push_back(folder.path);
    }
    if (!found.empty())
        return found;
    workspace.requireReadableSettings();
    throw CommandFailure{path.clean + " is not watched"};
}

}  // namespace

void FolderChanges::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("alreadyWatched", alreadyWatched);
        encoder.member("changed", changed);
        encoder.member("folders", folders);
        encoder.member("replaced", replaced);
    });
}

FolderChanges FolderChanges::decode(const JSONDecoder& decoder)
{
    FolderChanges changes{
        .changed = decoder["changed"].strings(),
        .alreadyWatched = decoder["alreadyWatched"].strings(),
        .folders = decoder["folders"].list<WatchedFolder>(),
    };
    if (const auto replaced = decoder.find("replaced"))
        changes.replaced = ReplacedSettings::decode(*replaced);
    return changes;
}

FolderChanges addFolders(Workspace& workspace, const std::vector<GivenPath>& paths)
{
    const std::vector<WatchedFolder>& watched = workspace.controller().settings().folders;
    FolderChanges changes;
    for (const GivenPath& each : paths) {
        const std::string& path = each.clean;
        if (isWatched(path, watched) || contains(changes.changed, path)) {
            changes.alreadyWatched.push_back(path);
            continue;
        }
        requireFolder(path, workspace.fileManager());
        requireNoSupportFolder(path, workspace);
        changes.changed.push_back(path);
    }
    if (!changes.changed.empty()) {
        changes.replaced = workspace.changeSettings([&](Settings& settings) {
            for (const std::string& path : changes.changed)
                settings.folders.push_back(newWatchedFolder(path));
        });
    }
    changes.folders = workspace.controller().settings().folders;
    return changes;
}

FolderChanges removeFolders(Workspace& workspace, const std::vector<GivenPath>& paths)
{
    const std::vector<WatchedFolder>& watched = workspace.controller().settings().folders;
    FolderChanges changes;
    for (const GivenPath& each : paths) {
        for (std::string& path : watchedPaths(each, workspace, watched)) {
            if (!contains(changes.changed, path))
                changes.changed.push_back(std::move(path));
        }
    }
    changes.replaced = workspace.changeSettings([&](Settings& settings) {
        std::erase_if(settings.folders,
            [&](const WatchedFolder& folder) { return contains(changes.changed, folder.path); });
    });
    changes.folders = workspace.controller().settings().folders;
    return changes;
}

void requireTextPath(const std::string& path)
{
    if (!isValidUTF8(path))
        throw CommandFailure{"cannot watch " + path + ": its path is not valid UTF-8"};
}

void requireNoSupportFolder(const Settings& settings, const Workspace& workspace)
{
    for (const WatchedFolder& folder : settings.folders) {
        if (isSupportFolder(folder.path, workspace))
            throw CommandFailure{
                "cannot sweep " + folder.path + ": Tidemark keeps its own files there"};
    }
}

bool isSupportFolder(const std::string& path, const Workspace& workspace)
{
    std::error_code ignored;
    return std::filesystem::equivalent(path, workspace.supportFolder().path(), ignored);
}

}  // namespace tidemark
