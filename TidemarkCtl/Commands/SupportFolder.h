#pragma once

#include "FileURL.h"
#include "Invocation.h"
#include "SupportLock.h"

namespace tidemark {

/// The one that was asked for, else the user's own. Nothing is made. Throws filesystem_error when there is
/// no home folder.
FileURL supportFolder(const Invocation& invocation);

/// Waits for the right to change the files in a support folder, which is made if it is missing, and says so
/// when that takes long. Throws filesystem_error.
SupportLock lockForChanges(const FileURL& supportFolder);

}  // namespace tidemark
