#pragma once

#include "FileInfo.h"

#include <array>
#include <string_view>

namespace tidemark {

/// Keeps files that are still being written or downloaded out of a sweep.
namespace StabilityGate {

/// How the names of unfinished files end, compared with the name in lower case.
inline constexpr std::array<std::string_view, 5> inProgressSuffixes{
    ".download", ".crdownload", ".part", ".partial", ".tmp"};

/// Whether the file has rested and its name is no unfinished file's.
bool isStable(const FileInfo& file, Seconds gracePeriod, Date now);

/// False for a file modified less than `gracePeriod` before `now`. Once rested, a file stays so until it is
/// modified again.
bool hasRested(const FileInfo& file, Seconds gracePeriod, Date now);

/// Whether the name ends like an unfinished file's.
bool isInProgress(const FileInfo& file);

}  // namespace StabilityGate

}  // namespace tidemark
