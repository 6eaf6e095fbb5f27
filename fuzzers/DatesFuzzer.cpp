#include "Date.h"
#include "MarkdownFrontMatter.h"
#include "Require.h"
#include "RuleAction.h"
#include "ScreenshotNamer.h"
#include "Text.h"
#include "TimeZone.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace tidemark {

/// With and without summer time, on both hemispheres, with whole days skipped, and with midnights that
/// never were.
static const std::vector<TimeZone>& zones()
{
    static const std::vector<TimeZone> all = [] {
        std::vector<TimeZone> known;
        for (const char* name : {"UTC", "Europe/Berlin", "America/Sao_Paulo", "Pacific/Apia",
                 "Australia/Lord_Howe", "Africa/Cairo", "Asia/Kathmandu"}) {
            if (const auto zone = TimeZone::named(name))
                known.push_back(*zone);
        }
        return known;
    }();
    return all;
}

/// The same text with a "0" in place of every digit.
static std::string shape(std::string_view text)
{
    std::string result{text};
    std::ranges::replace_if(
        result, [](char c) { return c >= '0' && c <= '9'; }, '0');
    return result;
}

static void requireToWrite(Date date)
{
    const std::string text = formatISO8601(date);
    const auto again = parseISO8601(text);
    require(shape(text) == "0000-00-00T00:00:00Z", "a date that is written has its form");
    require(again.has_value() && formatISO8601(*again) == text, "and can be read");
    const bool isOutside =
        text.starts_with("0000-01-01T00:00:00") || text.starts_with("9999-12-31T23:59:59");
    require(isOutside || Date{Seconds{std::floor(date.time_since_epoch().count())}} == *again,
        "and reads the same");
}

static void requireToReadAsWritten(std::string_view text)
{
    const auto date = parseISO8601(text);
    if (!date)
        return;
    requireToWrite(*date);
    if (text.ends_with('Z'))
        require(formatISO8601(*date) == text, "a date in UTC is written as it was read");
}

static auto dayOf(const LocalTime& time)
{
    return std::tuple{time.year, time.month, time.day};
}

static void requireNamesByTime(Date date, std::string_view extension, const TimeZone& zone)
{
    const LocalTime time = zone.localTime(date);
    require(time.year >= 1 && time.year <= 9999 && time.month >= 1 && time.month <= 12
            && time.day >= 1 && time.day <= 31 && time.hour < 24 && time.minute < 60
            && time.second < 60,
        "a local time is one of calendar and clock");
    require(shape(monthFolder(date, zone)) == "0000-00", "a month folder has its form");
    const std::string name = ScreenshotNamer::fileName(date, std::nullopt, extension, zone);
    require(shape(name).starts_with("0000-00-00 00.00"), "a screenshot's name has its form");
    require(isFileName(name) && (extension.empty() || pathExtension(name) == extension),
        "a screenshot's name is one, with the extension given");
    require(name.starts_with(monthFolder(date, zone)), "a screenshot and its month agree");
}

/// What a day's first moment shows is that day, or the first one that the clocks showed instead; a moment
/// before, it was an earlier one.
static void requireStartOfDay(int year, int month, int day, const TimeZone& zone)
{
    const auto start = zone.startOfDay(year, month, day);
    if (!start || year <= 1 || year >= 9999)
        return;
    const std::tuple wanted{
        static_cast<std::int64_t>(year), static_cast<unsigned>(month), static_cast<unsigned>(day)};
    require(dayOf(zone.localTime(*start)) >= wanted, "a day's first moment is on it");
    require(dayOf(zone.localTime(*start - Seconds{1})) < wanted, "a day begins but once");
}

static void requireDayOfNote(std::string_view text)
{
    const MarkdownFrontMatter matter{.title = {}, .date = std::string{text}};
    const auto created = matter.createdDate();
    const auto month = matter.month();
    if (month)
        require(text.starts_with(*month) && isFileName(*month), "a note's month names a folder");
    if (!created)
        return;
    require(shape(text.substr(0, 10)) == "0000-00-00", "only a day of the calendar is a day");
    require(month == std::string{text.substr(0, 7)}, "a note's day and month agree");
}

template <typename Value>
static Value taken(std::string_view& bytes)
{
    Value value{};
    const std::size_t size = std::min(sizeof(value), bytes.size());
    std::memcpy(&value, bytes.data(), size);
    bytes.remove_prefix(size);
    return value;
}

/// Numbers of whatever size, most of which are no dates, and the same brought near to dates.
static void requireOfNumbers(std::string_view bytes)
{
    const auto seconds = taken<double>(bytes);
    const auto year = taken<std::int32_t>(bytes);
    const auto month = taken<std::int8_t>(bytes);
    const auto day = taken<std::int8_t>(bytes);
    std::string extension{bytes.substr(0, 8)};
    if (extension.find_first_of(std::string_view{"/.\0", 3}) != std::string::npos)
        extension = "png";
    if (std::isnan(seconds))
        return;
    for (const TimeZone& zone : zones()) {
        for (const double each : {seconds, std::fmod(seconds, 253'402'300'800.0)}) {
            const Date date{Seconds{each}};
            requireToWrite(date);
            requireNamesByTime(date, extension, zone);
        }
        requireStartOfDay(year, month, day, zone);
        requireStartOfDay(1850 + (year & 0xFF), month % 13, day % 32, zone);
    }
}

}  // namespace tidemark

/// Whatever is taken for a date, and whatever moment a file system tells: texts and names made of it are right.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    requireToReadAsWritten(text);
    if (isValidUTF8(text))
        requireDayOfNote(text);
    requireOfNumbers(text);
    return 0;
}
