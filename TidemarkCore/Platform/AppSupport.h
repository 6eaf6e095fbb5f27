#pragma once

#include "FileURL.h"
#include "OwnChanges.h"

#include <string_view>

namespace tidemark {

/// The folder in which the application keeps its own files: `$XDG_DATA_HOME/Tidemark`, by default
/// `~/.local/share/Tidemark` (XDG Base Directory Specification).
namespace AppSupport {

/// Where the folder is, whether or not it exists. Throws filesystem_error when there is no home folder.
FileURL folder();

/// The place of the file `name` in that folder, which is made, for the user alone (mode 0700), if it is
/// missing. Throws filesystem_error when it cannot be made.
FileURL fileURL(std::string_view name);

/// Makes a support folder, for the user alone, if it is missing. Throws filesystem_error.
void create(const FileURL& folder, OwnChanges ownChanges = {});

}  // namespace AppSupport

}  // namespace tidemark
