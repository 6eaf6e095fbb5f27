#pragma once

#include "FileURL.h"

#include <optional>
#include <string>

namespace tidemark {

/// Where the running application lies. Any thread.
namespace InstallLocation {

/// The bundle that holds a program: the folder "<name>.app" with "Info.json" whose "bin" it is in.
/// Nothing for a program anywhere else, such as in a build folder or where a package puts it.
/// `executable` has no links in it.
std::optional<FileURL> bundleOf(const FileURL& executable);

/// Throws UpdateError of the kind `readOnlyLocation` unless the bundle can be replaced by this user: not
/// on a read-only file system, the folder above writable, but not by everybody, and nobody else's to
/// manage: packages have /usr (but for /usr/local), /nix/store, /gnu/store, /snap and /app, and a path
/// with "/AppTranslocation/" in it is a copy that vanishes.
void requireReplaceable(const std::optional<FileURL>& bundle);

}  // namespace InstallLocation

}  // namespace tidemark
