#pragma once

#include "FileURL.h"
#include "OwnChanges.h"

#include <sys/types.h>

namespace tidemark {

/// Folders by the kernel's own calls. Safe from any thread.
namespace Folders {

/// Makes one folder with this mode (less the umask) and has its name reach the disk, so that nothing that is
/// moved into it can outlive it in a power cut. Returns the errno of a failure, else 0: also for a folder,
/// or link to one, that is there already.
int makeOne(const FileURL& folder, mode_t mode, OwnChanges ownChanges);

/// The same with every missing parent. An existing folder, or link to
/// one, is fine. Throws filesystem_error, file_exists when something else stands there.
void make(const FileURL& folder, mode_t mode, OwnChanges ownChanges);

/// Whether `url` is a folder or a link to one.
bool isFolder(const FileURL& url);

/// Removes a name of anything but a folder. Returns what unlink(2) returned, and its errno.
int removeName(const FileURL& url, OwnChanges ownChanges);

/// Has the names in `folder` reach the disk. Throws filesystem_error.
void flush(const FileURL& folder);

/// The same where the folder is there, may be read, and its file system can do that.
void flushIfPossible(const FileURL& folder);

}  // namespace Folders

}  // namespace tidemark
