#include "PeopleText.h"

#include "DisplayText.h"
#include "StandardFolders.h"

#include <array>
#include <cstdio>
#include <filesystem>

namespace tidemark {

static std::string homeToShorten()
{
    try {
        const std::string home = StandardFolders::home().path();
        return home == "/" ? std::string{} : home;
    } catch (const std::filesystem::filesystem_error&) {
        return {};  // paths are shown in full then
    }
}

PeopleText::PeopleText()
    : m_home(homeToShorten())
    , m_timeZone(TimeZone::current())
{
}

std::string PeopleText::path(std::string_view path) const
{
    if (!m_home.empty() && path.starts_with(m_home)) {
        const std::string_view rest = path.substr(m_home.size());
        if (rest.empty() || rest.starts_with('/'))
            return '~' + displayText(rest);
    }
    return displayText(path);
}

std::string PeopleText::date(Date date) const
{
    std::string text = dateWithSeconds(date);
    text.resize(text.rfind(':'));
    return text;
}

std::string PeopleText::dateWithSeconds(Date date) const
{
    const LocalTime time = m_timeZone.localTime(date);
    std::array<char, 64> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(),
        "%04lld-%02u-%02u %02u:%02u:%02u", static_cast<long long>(time.year), time.month, time.day,
        time.hour, time.minute, time.second);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string PeopleText::number(std::size_t count)
{
    std::string text = std::to_string(count);
    for (std::size_t end = text.size(); end > 3; end -= 3)
        text.insert(end - 3, 1, ',');
    return text;
}

std::string PeopleText::count(std::size_t count, std::string_view singular)
{
    return number(count) + ' ' + std::string{singular} + (count == 1 ? "" : "s");
}

}  // namespace tidemark
