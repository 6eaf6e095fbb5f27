#pragma once

#include "Move.h"

namespace tidemark {

/// Moves files without ever replacing another one.
///
/// `move` chooses the first way that the file system offers; the ways are separate so that each can be
/// tested by itself. All throw filesystem_error, file_exists when something stands at `to`, and leave the whole
/// file at `from` then. `move` and `moveWithinFileSystem` refuse folders that are not where they were found any
/// more; the error names the folder. Whatever comes into their places after that look, nothing is touched but
/// what is in the folders that are held. Paths are absolute and hold no NUL. Safe from any thread.
namespace FileMover {

enum class Result {
    moved,
    notOffered,  ///< The file system has no such way; nothing was changed.
    otherFileSystem,  ///< `to` lies on another file system; nothing was changed.
};

/// Moves by any way, across file systems by a copy (regular files and links only).
void move(const Move& move);

/// Moves by any way but a copy. Never answers `notOffered`.
Result moveWithinFileSystem(const Move& move);

/// The kernel's own rename that refuses to replace.
Result moveByRename(const Move& move);

/// Gives the file its new name beside the old one, which a hard link never replaces, and removes the old.
/// Not offered for folders.
Result moveByLink(const Move& move);

/// Makes an empty file (or folder) at `to`, which fails if the name is taken, and renames over it. Another
/// program that writes into that empty file within the moment it stands there would lose what it wrote:
/// for file systems that offer nothing better.
Result moveByPlaceholder(const Move& move);

}  // namespace FileMover

}  // namespace tidemark
