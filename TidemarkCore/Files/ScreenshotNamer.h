#pragma once

#include "Date.h"
#include "TimeZone.h"

#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// Names screenshots by their time, so that a folder of them sorts by it.
namespace ScreenshotNamer {

/// Such as "2024-05-03 14.05 Preview.png": year, month, day, hour (of 24) and minute in `timeZone`, then
/// `app`, trimmed of tabs and space separators, if anything is left of it, then `ext` as given if it is
/// not empty.
std::string fileName(
    Date date, std::optional<std::string_view> app, std::string_view ext, const TimeZone& timeZone);

}  // namespace ScreenshotNamer

}  // namespace tidemark
