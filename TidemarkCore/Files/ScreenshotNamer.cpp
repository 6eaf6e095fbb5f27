#include "ScreenshotNamer.h"

#include "Text.h"

#include <array>
#include <cstdio>

namespace tidemark::ScreenshotNamer {

std::string fileName(
    Date date, std::optional<std::string_view> app, std::string_view ext, const TimeZone& timeZone)
{
    const LocalTime time = timeZone.localTime(date);
    std::array<char, 64> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "%04lld-%02u-%02u %02u.%02u",
        static_cast<long long>(time.year), time.month, time.day, time.hour, time.minute);
    std::string name(buffer.data(), static_cast<std::size_t>(length));

    const std::string_view appName = trimmedOfWhitespace(app.value_or(""));
    if (!appName.empty())
        name.append(" ").append(appName);
    if (!ext.empty())
        name.append(".").append(ext);
    return name;
}

}  // namespace tidemark::ScreenshotNamer
