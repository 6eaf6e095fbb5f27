#pragma once

#include "FileInfo.h"

#include <vector>

namespace tidemark {

/// Turns a folder into the facts of the files in it that may be swept.
namespace DirectoryScan {

/// The folder's own regular files in NameOrder, names it cannot tell apart in listing order. Left out are
/// hidden entries, folders and everything else that is no plain file, and cloud items whose content is not
/// on this machine. Throws filesystem_error when the folder cannot be listed or any entry's facts cannot
/// be read: there is no partial result.
std::vector<FileInfo> files(const FileURL& folder, FileManager& fileManager);

/// The same, but `isScreenCapture` may be false where `flagMatters` says no; see
/// FileManager::contentsWithFlags.
std::vector<FileInfo> files(
    const FileURL& folder, FileManager& fileManager, const NameTest& flagMatters);

/// Whether an entry with these facts may be swept at all.
bool isSweepable(const FileFacts& facts);

}  // namespace DirectoryScan

}  // namespace tidemark
