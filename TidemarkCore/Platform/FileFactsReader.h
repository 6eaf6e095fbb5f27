#pragma once

#include "FileFacts.h"
#include "FileManager.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// Reads what the kernel knows of files: dates, kinds, the screen-capture flag. Safe from any thread.
namespace FileFactsReader {

/// The facts of one entry; a link is described, not followed. Throws filesystem_error.
FileFacts facts(const FileURL& url);

/// The visible entries of a folder with their facts, in the order of the file system; see
/// FileManager::contentsOfDirectory. Large folders are read by several threads.
std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder);

/// See FileManager::contentsWithFlags.
std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder, const NameTest& flagMatters);

/// See FileManager::requireListable. Reads the first entries' names and nothing else.
void requireListable(const FileURL& folder);

/// Whether a binary property list ("bplist00") holds nothing but the value true.
bool isPropertyListTrue(std::string_view bytes);

}  // namespace FileFactsReader

}  // namespace tidemark
