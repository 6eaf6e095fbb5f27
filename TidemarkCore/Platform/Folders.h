#pragma once

#include "FileURL.h"
#include "OwnChanges.h"

#include <sys/types.h>

namespace tidemark {

/// Folders by the kernel's own calls. Safe from any thread.
namespace Folders {

/// Makes `folder` and every missing parent with this mode (less the umask). An existing folder, or link to
/// one, is fine. Throws filesystem_error, file_exists when something else stands there.
void make(const FileURL& folder, mode_t mode, OwnChanges ownChanges);

/// Whether `url` is a folder or a link to one.
bool isFolder(const FileURL& url);

/// Removes a name of anything but a folder. Returns what unlink(2) returned, and its errno.
int removeName(const FileURL& url, OwnChanges ownChanges);

/// Has the names in `folder` reach the disk. Throws filesystem_error.
void flush(const FileURL& folder);

}  // namespace Folders

}  // namespace tidemark
