#pragma once

#include "FileURL.h"

namespace tidemark {

/// What installations have left in the temporary directory that were killed.
namespace UpdateLeftovers {

/// Removes every work folder, "qrv-update-<process>", whose process is gone, unless a script lies beside
/// it, which may be at work; after a day no script is. What cannot be removed stays. Throws nothing.
void remove(const FileURL& temporaryDirectory);

/// Removes a folder with all that is in it, also where an archive has taken the permissions from its folders.
/// Follows no links. What cannot be removed stays. Throws nothing.
void removeTree(const FileURL& folder);

/// Whether a swap script may be waiting or swapping: it is there, and not older than a day.
bool mayBeAtWork(const FileURL& script);

}  // namespace UpdateLeftovers

}  // namespace tidemark
