#pragma once

#include "FileURL.h"
#include "HeldFolder.h"
#include "OwnChanges.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>

namespace tidemark {

/// Folders, and names in them, by the kernel's own calls. Safe from any thread.
namespace Folders {

/// The folder that `url` leads to, by a link, too. Throws filesystem_error, not_a_directory for anything else.
HeldFolder hold(const FileURL& url);

/// The same for a folder somewhere below `above`, whatever its path leads to by now.
HeldFolder holdBelow(const HeldFolder& above, const FileURL& url);

/// The folder of this name in `parent`; a link is refused.
HeldFolder holdIn(const HeldFolder& parent, std::string_view name);

/// Throws filesystem_error unless the folder is still what its path leads to.
void requireInPlace(const HeldFolder& folder);

/// Makes the folder with this mode (less the umask) and every missing parent, and has their names reach the
/// disk, so that nothing that is moved into them can outlive them in a power cut. An existing folder, or link
/// to one, is fine; but once a folder was found missing, no link is followed that comes into its place. Throws
/// filesystem_error, file_exists when something else stands there.
HeldFolder make(const FileURL& url, mode_t mode, OwnChanges ownChanges);

/// The same below `above`, as holdBelow.
HeldFolder makeBelow(
    const HeldFolder& above, const FileURL& url, mode_t mode, OwnChanges ownChanges);

/// The folder of this name in `parent`, made like the above if nothing is there. Throws
/// file_exists for a link, too.
HeldFolder makeIn(
    const HeldFolder& parent, std::string_view name, mode_t mode, OwnChanges ownChanges);

/// Whether `url` is a folder or a link to one.
bool isFolder(const FileURL& url);

/// What stands there, a link being described itself. Nothing, with an errno, when that cannot be told.
std::optional<struct stat> statusOf(const HeldEntry& entry);

/// Whether it is the file with this status that stands there.
bool leadsTo(const HeldEntry& entry, const struct stat& file);

/// Removes a name of anything but a folder. Returns what unlink(2) returned, and its errno.
int removeName(const FileURL& url, OwnChanges ownChanges);
int removeName(const HeldEntry& entry, OwnChanges ownChanges);

/// Has the names in `folder` reach the disk. Throws filesystem_error.
void flush(const FileURL& folder);
void flush(const HeldFolder& folder);

/// The same where the folder is there, may be read, and its file system can do that.
void flushIfPossible(const FileURL& folder);
void flushIfPossible(const HeldFolder& folder);

}  // namespace Folders

}  // namespace tidemark
