#pragma once

#include "Move.h"

namespace tidemark {

/// Moves a file to another file system: copies it whole, has the copy reach the disk, puts it into place
/// without replacing anything, and removes the original only if it still is the file that was copied.
///
/// The copy takes along the content with its holes, owner, mode, dates, extended attributes and access
/// lists; what the destination cannot keep is an error (but for the attributes of the namespaces
/// "security" and "trusted", which only the system may set). Throws filesystem_error with both paths:
/// file_exists when something stands at `to`, device_or_resource_busy when the original changed
/// meanwhile, and cross_device_link for anything but regular files and symbolic links. A folder that is
/// not where it was found any more, before the copy is put into place or before the original is removed,
/// is an error that names it. The whole file is at `from` then, and nothing of it at `to`. Safe from any
/// thread.
namespace FileCopyMover {

/// How the copy is kept out of sight until it is whole.
enum class Temporary {
    unnamed,  ///< O_TMPFILE: it vanishes with the process.
    named,  ///< A hidden ".tidemark-<random>.tmp" in the destination folder.
};

/// Whether the folder's file system, and this process, can give an unnamed file its name later.
bool offersUnnamedFiles(const HeldFolder& folder);

void move(const Move& move);
void move(const Move& move, Temporary temporary);

}  // namespace FileCopyMover

}  // namespace tidemark
