#pragma once

#include "FileURL.h"

#include <span>
#include <vector>

namespace tidemark {

/// Tidemark's own temporary directory, "tidemark-<uid>" in a folder that all users may share.
///
/// Others could have put something of theirs in its place, so it is checked each time: it is a real directory
/// and no link, belongs to the effective user, and has mode 0700; and nobody but that user and root can
/// replace it in the folder that holds it. An own directory that others can only read is closed to them; one
/// that they can write to may hold what they put there, and is refused.
///
/// Safe from any thread as long as none changes the environment.
namespace TemporaryDirectory {

/// Where the directory may be, best first: `$TMPDIR`, "/tmp", `$XDG_RUNTIME_DIR`. A variable that holds no
/// absolute path is left out.
std::vector<FileURL> candidates();

/// The directory in the first of the candidates where it can be had, made if it is missing. Throws
/// filesystem_error, with the path and the reason of the first of them, when there is none.
FileURL folder();

/// The same in the first of these folders.
FileURL folder(std::span<const FileURL> candidates);

}  // namespace TemporaryDirectory

}  // namespace tidemark
