#pragma once

#include "WatchedFolder.h"

#include <string>
#include <vector>

namespace tidemark {

/// The rules that a folder gets when it is added: screenshots into "Desktop/Screenshots" and old downloads
/// into "Downloads/Archive" of the home folder, whatever these are called elsewhere. Throws CommandFailure
/// when the path of the home folder is not valid UTF-8, filesystem_error when there is none.
std::vector<Rule> defaultRulesForNewFolders();

/// A folder as it is added: with these rules, and with its Markdown notes sorted. Throws the same.
WatchedFolder newWatchedFolder(std::string path);

}  // namespace tidemark
