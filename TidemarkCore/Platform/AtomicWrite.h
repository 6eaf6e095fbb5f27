#pragma once

#include "FileURL.h"
#include "OwnChanges.h"

#include <span>
#include <string_view>

namespace tidemark {

/// Replaces whole files such that no reader, and no power cut, ever meets half of one.
///
/// The new content is written to a hidden temporary file beside the old one, brought to the disk and
/// renamed into place. A process that is killed meanwhile leaves that file behind; `removeLeftovers` finds
/// it. Safe from any thread; who writes last wins.
namespace AtomicWrite {

/// See FileManager::writeAtomically. Throws filesystem_error; the temporary file is gone then.
void write(const FileURL& url, std::span<const std::string_view> pieces, OwnChanges ownChanges);

/// Whether `name` is that of a temporary file for writing the file `fileName`.
bool isTemporaryName(std::string_view name, std::string_view fileName);

/// Removes the temporary files that killed writers of `fileName` left in `folder`. Only for who knows that
/// nobody writes it now. What cannot be removed stays: it is in nobody's way.
void removeLeftovers(const FileURL& folder, std::string_view fileName, OwnChanges ownChanges);

}  // namespace AtomicWrite

}  // namespace tidemark
