#pragma once

#include "FileURL.h"

#include <vector>

namespace tidemark {

/// The folders that are watched unless the user chooses others.
namespace WatchedFolders {

/// The Desktop, then the Downloads folder, as StandardFolders finds them at the time of the call. One that
/// cannot be found, because it is missing or set to the home folder itself, is left out. Does not throw
/// filesystem_error. Safe from any thread as long as none changes the environment.
std::vector<FileURL> standard();

}  // namespace WatchedFolders

}  // namespace tidemark
