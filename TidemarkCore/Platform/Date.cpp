#include "Date.h"

#include <algorithm>
#include <cmath>

namespace tidemark {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr sys_seconds earliestWritable{sys_days{year{0} / 1 / 1}};
constexpr sys_seconds latestWritable{
    sys_days{year{9999} / 12 / 31} + days{1} - std::chrono::seconds{1}};

/// Writes `value` with as many digits as `digits` asks for.
void appendNumber(std::string& text, unsigned value, int digits)
{
    const auto end = text.size() + static_cast<std::size_t>(digits);
    text.resize(end);
    for (auto at = end; digits-- > 0; value /= 10)
        text[--at] = static_cast<char>('0' + value % 10);
}

/// Takes a text apart from its front. A part that is not there makes the whole reading fail.
class Reader {
public:
    explicit Reader(std::string_view text)
        : m_rest(text)
    {
    }

    int number(std::size_t digits)
    {
        int value = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            const char c = character();
            m_failed = m_failed || c < '0' || c > '9';
            value = value * 10 + (c - '0');
        }
        return m_failed ? 0 : value;
    }

    void expect(char wanted) { m_failed = character() != wanted || m_failed; }

    bool skip(char wanted)
    {
        if (!m_rest.starts_with(wanted))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    char character()
    {
        if (m_rest.empty()) {
            m_failed = true;
            return '\0';
        }
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    void fail() { m_failed = true; }
    bool reachedEnd() const { return !m_failed && m_rest.empty(); }

private:
    std::string_view m_rest;
    bool m_failed = false;
};

sys_days readDay(Reader& reader)
{
    const year years{reader.number(4)};
    reader.expect('-');
    const std::chrono::month month{static_cast<unsigned>(reader.number(2))};
    reader.expect('-');
    const std::chrono::day day{static_cast<unsigned>(reader.number(2))};
    const year_month_day date{years, month, day};
    if (!date.ok()) {
        reader.fail();
        return {};
    }
    return sys_days{date};
}

int readNumberBelow(int bound, Reader& reader)
{
    const int value = reader.number(2);
    if (value >= bound)
        reader.fail();
    return value;
}

std::chrono::seconds readTimeOfDay(Reader& reader)
{
    const int hours = readNumberBelow(24, reader);
    reader.expect(':');
    const int minutes = readNumberBelow(60, reader);
    reader.expect(':');
    const int seconds = readNumberBelow(60, reader);
    return std::chrono::seconds{(hours * 60 + minutes) * 60 + seconds};
}

/// How far the clocks of the zone are ahead of UTC.
std::chrono::minutes readZone(Reader& reader)
{
    const char sign = reader.character();
    if (sign == 'Z')
        return {};
    if (sign != '+' && sign != '-')
        reader.fail();
    const int hours = readNumberBelow(24, reader);
    reader.skip(':');
    const int minutes = readNumberBelow(60, reader);
    const std::chrono::minutes offset{hours * 60 + minutes};
    return sign == '-' ? -offset : offset;
}

sys_seconds wholeSeconds(Date date)
{
    const double earliest = static_cast<double>(earliestWritable.time_since_epoch().count());
    const double latest = static_cast<double>(latestWritable.time_since_epoch().count());
    const double seconds = std::floor(date.time_since_epoch().count());
    return sys_seconds{
        std::chrono::seconds{static_cast<std::int64_t>(std::clamp(seconds, earliest, latest))}};
}

}  // namespace

Date dateFromUnixTime(std::int64_t seconds, std::uint32_t nanoseconds)
{
    return Date{Seconds{static_cast<double>(seconds) + static_cast<double>(nanoseconds) * 1e-9}};
}

std::string formatISO8601(Date date)
{
    const sys_seconds moment = wholeSeconds(date);
    const sys_days day = std::chrono::floor<days>(moment);
    const year_month_day calendar{day};
    const std::chrono::hh_mm_ss clock{moment - day};

    std::string text;
    text.reserve(sizeof("2025-03-14T09:26:53Z"));
    appendNumber(text, static_cast<unsigned>(static_cast<int>(calendar.year())), 4);
    text += '-';
    appendNumber(text, static_cast<unsigned>(calendar.month()), 2);
    text += '-';
    appendNumber(text, static_cast<unsigned>(calendar.day()), 2);
    text += 'T';
    appendNumber(text, static_cast<unsigned>(clock.hours().count()), 2);
    text += ':';
    appendNumber(text, static_cast<unsigned>(clock.minutes().count()), 2);
    text += ':';
    appendNumber(text, static_cast<unsigned>(clock.seconds().count()), 2);
    text += 'Z';
    return text;
}

std::optional<Date> parseISO8601(std::string_view text)
{
    Reader reader{text};
    const sys_days day = readDay(reader);
    reader.expect('T');
    const std::chrono::seconds time = readTimeOfDay(reader);
    const std::chrono::minutes offset = readZone(reader);
    if (!reader.reachedEnd())
        return std::nullopt;
    return Date{day + time - offset};
}

}  // namespace tidemark
