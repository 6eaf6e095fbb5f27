#pragma once

#include "Date.h"
#include "TimeZone.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tidemark {

/// Writes paths, dates and numbers as people like to read them. What it returns is safe to display.
class PeopleText {
public:
    /// With the home folder and the time zone of this process.
    PeopleText();

    /// With "~" for the home folder.
    std::string path(std::string_view path) const;

    /// Such as "2024-05-03 14:05", in local time.
    std::string date(Date date) const;

    /// Such as "2024-05-03 14:05:09", in local time.
    std::string dateWithSeconds(Date date) const;

    /// With a comma between groups of thousands.
    static std::string number(std::size_t count);

    /// Such as "1 file" or "1,200 files".
    static std::string count(std::size_t count, std::string_view singular);

private:
    std::string m_home;  // empty when it has no short form
    TimeZone m_timeZone;
};

}  // namespace tidemark
