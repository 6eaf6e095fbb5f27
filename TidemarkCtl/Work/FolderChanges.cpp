#include "FolderChanges.h"

#include "CleanPath.h"
#include "CommandFailure.h"
#include "DefaultRules.h"
#include "StandardFolders.h"
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

/// Sweeping Tidemark's own files away would lose the settings.
void requireNoSupportFolder(const std::string& path, const Workspace& workspace)
{
    std::error_code ignored;
    if (std::filesystem::equivalent(path, workspace.supportFolder().path(), ignored))
        throw CommandFailure{"cannot watch " + path + ": Tidemark keeps its own files there"};
}

void requireFolder(const std::string& path, FileManager& fileManager)
{
    const FileURL url = FileURL::directory(path);
    if (!isValidUTF8(path))
        throw CommandFailure{"cannot watch " + path + ": its path is not valid UTF-8"};
    if (!fileManager.fileExists(url))
        throw CommandFailure{"cannot watch " + path + ": there is no such folder"};
    if (!fileManager.directoryExists(url))
        throw CommandFailure{"cannot watch " + path + ": it is not a folder"};
}

WatchedFolder withDefaultRules(const std::string& path)
{
    const FileURL home = StandardFolders::home();
    if (!isValidUTF8(home.path()))
        throw CommandFailure{"the path of the home folder is not valid UTF-8: " + home.path()};
    const auto inHome = [&home](std::string_view folder, std::string_view name) {
        return home.appending(folder).appending(name, FileURL::Kind::directory);
    };
    return {.path = path,
        .rules =
            DefaultRules::all(inHome("Desktop", "Screenshots"), inHome("Downloads", "Archive")),
        .sortsMarkdown = true};
}

/// The stored paths that `path` stands for.
std::vector<std::string> watchedPaths(
    const std::string& path, const Workspace& workspace, const std::vector<WatchedFolder>& folders)
{
    const std::string clean = cleanAbsolutePath(path);
    std::vector<std::string> found;
    for (const WatchedFolder& folder : folders) {
        if (folder.path == path || isSame(folder, clean))
            found.push_back(folder.path);
    }
    if (!found.empty())
        return found;
    workspace.requireReadableSettings();
    throw CommandFailure{clean + " is not watched"};
}

}  // namespace

FolderChanges addFolders(Workspace& workspace, std::span<const std::string> paths)
{
    const std::vector<WatchedFolder>& watched = workspace.controller().settings().folders;
    FolderChanges changes;
    for (const std::string& each : paths) {
        const std::string path = cleanAbsolutePath(each);
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
                settings.folders.push_back(withDefaultRules(path));
        });
    }
    changes.folders = workspace.controller().settings().folders;
    return changes;
}

FolderChanges removeFolders(Workspace& workspace, std::span<const std::string> paths)
{
    const std::vector<WatchedFolder>& watched = workspace.controller().settings().folders;
    FolderChanges changes;
    for (const std::string& each : paths) {
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

}  // namespace tidemark
