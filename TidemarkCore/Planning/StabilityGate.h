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

/// False for an unfinished file's name, and for a file modified less than `gracePeriod` before `now`.
bool isStable(const FileInfo& file, Seconds gracePeriod, Date now);

}  // namespace StabilityGate

}  // namespace tidemark
