#include "TimeZone.h"

#include "ScopedEnvironment.h"

#include <gtest/gtest.h>

#include <limits>

namespace tidemark {

static Date date(const char* text)
{
    return *parseISO8601(text);
}

static std::ostream& operator<<(std::ostream& stream, const LocalTime& time)
{
    return stream << time.year << '-' << time.month << '-' << time.day << ' ' << time.hour << ':'
                  << time.minute << ':' << time.second;
}

struct ClockRow {
    const char* zone;
    const char* utc;
    LocalTime local;
};

TEST(TimeZone, ClocksFollowTheZonesRules)
{
    const ClockRow rows[] = {
        {"UTC", "1970-01-01T00:00:00Z", {1970, 1, 1, 0, 0}},
        {"UTC", "1969-12-31T23:59:59Z", {1969, 12, 31, 23, 59, 59}},
        {"Europe/Berlin", "2024-03-31T00:59:59Z", {2024, 3, 31, 1, 59, 59}},
        {"Europe/Berlin", "2024-03-31T01:00:00Z", {2024, 3, 31, 3, 0}},
        {"Europe/Berlin", "2024-10-27T00:59:59Z", {2024, 10, 27, 2, 59, 59}},
        {"Europe/Berlin", "2024-10-27T01:00:00Z", {2024, 10, 27, 2, 0}},
        {"America/New_York", "1960-07-04T12:00:00Z", {1960, 7, 4, 8, 0}},
        {"Asia/Kathmandu", "2024-05-03T12:00:00Z", {2024, 5, 3, 17, 45}},
        {"Europe/Berlin", "2999-07-01T12:00:00Z", {2999, 7, 1, 14, 0}},
        {"Pacific/Kiritimati", "9999-12-31T23:59:59Z", {9999, 12, 31, 23, 59, 59}},
        {"America/New_York", "0001-01-01T00:00:00Z", {1, 1, 1, 0, 0}},
    };
    for (const ClockRow& row : rows)
        EXPECT_EQ(TimeZone::named(row.zone)->localTime(date(row.utc)), row.local)
            << row.zone << ' ' << row.utc;
}

TEST(TimeZone, DatesOutOfRangeAreShownAsItsEnds)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const TimeZone zone = *TimeZone::named("Europe/Berlin");
    EXPECT_EQ(zone.localTime(Date{Seconds{infinity}}), (LocalTime{9999, 12, 31, 23, 59, 59}));
    EXPECT_EQ(zone.localTime(Date{Seconds{-infinity}}).year, 1);
    EXPECT_EQ(zone.localTime(Date{Seconds{-1e15}}).year, 1);
}

TEST(TimeZone, UnknownNamesAreNoZones)
{
    for (const char* name : {"", "Middle/Earth", "../../etc/passwd"})
        EXPECT_FALSE(TimeZone::named(name)) << name;
}

struct DayRow {
    const char* what;
    const char* zone;
    int year, month, day;
    const char* expected;
};

TEST(TimeZone, ADayStartsAtItsFirstMoment)
{
    const DayRow rows[] = {
        {"plain", "UTC", 2024, 2, 29, "2024-02-29T00:00:00Z"},
        {"summer", "Europe/Berlin", 2024, 7, 1, "2024-06-30T22:00:00Z"},
        {"the clocks skip an hour later", "Europe/Berlin", 2024, 3, 31, "2024-03-30T23:00:00Z"},
        {"the clocks go back later", "Europe/Berlin", 2024, 10, 27, "2024-10-26T22:00:00Z"},
        {"midnight is skipped", "America/Sao_Paulo", 2018, 11, 4, "2018-11-04T03:00:00Z"},
        {"midnight comes twice", "America/Havana", 2023, 11, 5, "2023-11-05T04:00:00Z"},
        {"the clocks go back to the day before", "America/Sao_Paulo", 2018, 2, 18,
            "2018-02-18T03:00:00Z"},
        {"a whole day is skipped", "Pacific/Apia", 2011, 12, 30, "2011-12-30T10:00:00Z"},
        {"before 1970", "Europe/Berlin", 1960, 1, 1, "1959-12-31T23:00:00Z"},
        {"far future", "Europe/Berlin", 2999, 7, 1, "2999-06-30T22:00:00Z"},
        {"far past", "UTC", 1, 1, 1, "0001-01-01T00:00:00Z"},
    };
    for (const DayRow& row : rows) {
        const TimeZone zone = *TimeZone::named(row.zone);
        const std::optional<Date> start = zone.startOfDay(row.year, row.month, row.day);
        ASSERT_TRUE(start) << row.what;
        EXPECT_EQ(formatISO8601(*start), row.expected) << row.what;
    }
}

TEST(TimeZone, DaysThatTheCalendarDoesNotHaveHaveNoStart)
{
    const TimeZone zone = *TimeZone::named("Europe/Berlin");
    const int rows[][3] = {{2023, 2, 29}, {2024, 4, 31}, {2024, 0, 1}, {2024, 13, 1}, {2024, 1, 0},
        {2024, 1, 32}, {2024, -1, 1}, {2024, 1, -1}, {100'000, 1, 1}, {2024, 257, 1},
        {2024, 1, 257}};
    for (const auto& row : rows)
        EXPECT_FALSE(zone.startOfDay(row[0], row[1], row[2]))
            << row[0] << ' ' << row[1] << ' ' << row[2];
}

TEST(TimeZone, TheFirstCenturiesAreShownAtOnceUnderAPOSIXRule)
{
    const ScopedEnvironment environment{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"};
    const TimeZone zone = TimeZone::current();

    EXPECT_EQ(zone.localTime(distantPast).year, 1);
    EXPECT_EQ(zone.localTime(date("0001-06-01T12:00:00Z")), (LocalTime{1, 6, 1, 13, 0}));
    EXPECT_TRUE(zone.startOfDay(1, 1, 1));
    EXPECT_TRUE(zone.startOfDay(0, 1, 1));
}

struct EnvironmentRow {
    const char* value;
    LocalTime noonInSummer;
};

TEST(TimeZone, TheCurrentOneFollowsTheEnvironment)
{
    const EnvironmentRow rows[] = {
        {"Europe/Berlin", {2024, 7, 1, 14, 0}},
        {":Europe/Berlin", {2024, 7, 1, 14, 0}},
        {"/usr/share/zoneinfo/Europe/Berlin", {2024, 7, 1, 14, 0}},
        {":/usr/share/zoneinfo/Europe/Berlin", {2024, 7, 1, 14, 0}},
        {"America/New_York", {2024, 7, 1, 8, 0}},
        {"UTC", {2024, 7, 1, 12, 0}},
        {"UTC0", {2024, 7, 1, 12, 0}},
        {"CET-1CEST,M3.5.0,M10.5.0/3", {2024, 7, 1, 14, 0}},
        {"", {2024, 7, 1, 12, 0}},
        {"Middle/Earth", {2024, 7, 1, 12, 0}},
        {"/no/such/file", {2024, 7, 1, 12, 0}},
    };
    for (const EnvironmentRow& row : rows) {
        const ScopedEnvironment environment{"TZ", row.value};
        EXPECT_EQ(TimeZone::current().localTime(date("2024-07-01T12:00:00Z")), row.noonInSummer)
            << row.value;
    }
}

}  // namespace tidemark
