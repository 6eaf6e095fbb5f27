#pragma once

#include "FileURL.h"

#include <sys/types.h>

namespace tidemark {

/// Folders by the kernel's own calls. Safe from any thread.
namespace Folders {

/// Makes `folder` and every missing parent with this mode (less the umask). An existing folder, or link to
/// one, is fine. Throws filesystem_error, file_exists when something else stands there.
void make(const FileURL& folder, mode_t mode);

/// Whether `url` is a folder or a link to one.
bool isFolder(const FileURL& url);

/// Has the names in `folder` reach the disk. Throws filesystem_error.
void flush(const FileURL& folder);

}  // namespace Folders

}  // namespace tidemark
