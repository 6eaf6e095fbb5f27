#pragma once

#include "FileURL.h"

#include <optional>

namespace tidemark {

/// The user's own folders: `$HOME` and the XDG user directories (xdg-user-dirs, user-dirs.dirs).
///
/// The environment and the configuration are read at every call. Safe from any thread as long as none
/// changes the environment.
namespace StandardFolders {

/// `$HOME` when it is absolute, else the home folder of the user database. Throws filesystem_error when
/// neither tells one.
FileURL home();

/// Nothing when the user has no such folder: it is set to the home folder itself, which is how XDG says
/// "none", or it does not exist.
std::optional<FileURL> desktop();
std::optional<FileURL> downloads();

/// Where applications keep the user's data: `$XDG_DATA_HOME` when it is absolute, else `~/.local/share`.
/// Throws filesystem_error like `home`.
FileURL dataHome();

}  // namespace StandardFolders

}  // namespace tidemark
