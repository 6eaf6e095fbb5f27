#pragma once

#include "FileURL.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tidemark {

/// Looks at an archive before anything of it is unpacked. Any thread.
namespace ArchiveInspection {

struct Limits {
    std::size_t entries = 10'000;
    std::int64_t unpackedBytes = std::int64_t{1} << 30;
};

/// Returns for a zip archive that unpacks to regular files, folders and links that stay within the folder of
/// their first component, every name once and BundlePath::isSafe, none below something that is no folder, and
/// to no more than the limits allow. The contents are unpacked for that and counted, since the announced sizes
/// may be wrong.
///
/// Throws UpdateError of the kind `unpack` for any other archive, filesystem_error if the file cannot be read,
/// and operation_canceled, a system_error, soon after `isCancelled` has become true.
void requireHarmless(
    const FileURL& archive, const Limits& limits, const std::atomic<bool>& isCancelled);

}  // namespace ArchiveInspection

}  // namespace tidemark
