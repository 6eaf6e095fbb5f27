#include "Date.h"

#include "Clock.h"

#include <gtest/gtest.h>

#include <limits>

namespace tidemark {

static Date at(double seconds)
{
    return Date{Seconds{seconds}};
}

struct WrittenDate {
    const char* text;
    double seconds;
};

TEST(Date, IsWrittenInUTCAndReadBack)
{
    const WrittenDate rows[] = {{"1970-01-01T00:00:00Z", 0}, {"1969-12-31T23:59:59Z", -1},
        {"2025-03-14T09:26:53Z", 1'741'944'413}, {"2000-02-29T12:00:00Z", 951'825'600},
        {"1900-02-28T23:59:59Z", -2'203'891'201}, {"2038-01-19T03:14:08Z", 2'147'483'648},
        {"0001-01-01T00:00:00Z", -62'135'596'800}, {"0000-01-01T00:00:00Z", -62'167'219'200},
        {"9999-12-31T23:59:59Z", 253'402'300'799}};
    for (const WrittenDate& row : rows) {
        EXPECT_EQ(formatISO8601(at(row.seconds)), row.text);
        EXPECT_EQ(parseISO8601(row.text), at(row.seconds)) << row.text;
    }
}

TEST(Date, FractionsAreDroppedTowardsThePast)
{
    EXPECT_EQ(formatISO8601(at(0.999)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(formatISO8601(at(-0.001)), "1969-12-31T23:59:59Z");
}

TEST(Date, OutOfRangeIsWrittenAsTheEndsOfTheRange)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(formatISO8601(at(1e300)), "9999-12-31T23:59:59Z");
    EXPECT_EQ(formatISO8601(at(infinity)), "9999-12-31T23:59:59Z");
    EXPECT_EQ(formatISO8601(at(-1e300)), "0000-01-01T00:00:00Z");
    EXPECT_EQ(formatISO8601(at(-infinity)), "0000-01-01T00:00:00Z");
}

TEST(Date, DistantPastIsTheFirstYear)
{
    EXPECT_EQ(formatISO8601(distantPast), "0001-01-01T00:00:00Z");
}

TEST(Date, ZonesAreRead)
{
    const Date noon = *parseISO8601("2024-05-03T12:00:00Z");
    EXPECT_EQ(parseISO8601("2024-05-03T14:00:00+02:00"), noon);
    EXPECT_EQ(parseISO8601("2024-05-03T14:00:00+0200"), noon);
    EXPECT_EQ(parseISO8601("2024-05-03T06:30:00-05:30"), noon);
    EXPECT_EQ(parseISO8601("2024-05-03T12:00:00-00:00"), noon);
    EXPECT_EQ(parseISO8601("2024-05-04T00:00:00+12:00"), noon);
}

TEST(Date, AnythingElseIsNoDate)
{
    for (const char* text : {"", "2024", "2024-05-03", "2024-05-03T12:00:00", "2024-05-03T12:00Z",
             "2024-05-03 12:00:00Z", "2024-05-03t12:00:00z", "2024-05-03T12:00:00.5Z",
             "2024-05-03T12:00:00Z ", " 2024-05-03T12:00:00Z", "2024-5-3T12:00:00Z",
             "2023-02-29T12:00:00Z", "2024-13-01T12:00:00Z", "2024-00-01T12:00:00Z",
             "2024-04-31T12:00:00Z", "2024-05-00T12:00:00Z", "2024-05-03T24:00:00Z",
             "2024-05-03T12:60:00Z", "2024-05-03T12:00:60Z", "2024-05-03T12:00:00+2",
             "2024-05-03T12:00:00+02", "2024-05-03T12:00:00+02:", "2024-05-03T12:00:00+24:00",
             "2024-05-03T12:00:00+02:60", "+2024-05-03T12:00:00Z", "-024-05-03T12:00:00Z",
             "2024-05-03T12:00:00ZZ", "2024-05-03T-1:00:00Z", "12024-05-03T12:00:00Z"})
        EXPECT_EQ(parseISO8601(text), std::nullopt) << text;
}

TEST(Date, ATextCutAnywhereIsNoDate)
{
    for (const std::string_view whole :
        {"2024-05-03T12:00:00Z", "2024-05-03T12:00:00+02:00", "2024-05-03T12:00:00-0200"}) {
        ASSERT_TRUE(parseISO8601(whole));
        for (std::size_t size = 0; size < whole.size(); ++size)
            EXPECT_EQ(parseISO8601(whole.substr(0, size)), std::nullopt) << whole << ' ' << size;
    }
}

TEST(Date, EveryDayOfTheCalendarIsReadBack)
{
    constexpr std::int64_t firstDay = -62'167'219'200;
    constexpr std::int64_t lastDay = 253'402'214'400;
    constexpr std::int64_t week = 7 * static_cast<std::int64_t>(secondsPerDay);
    for (std::int64_t day = firstDay; day <= lastDay; day += week) {
        const Date date = at(static_cast<double>(day + 3'661));
        const std::string text = formatISO8601(date);
        ASSERT_EQ(parseISO8601(text), date) << text;
    }
}

TEST(Date, KernelTimesKeepTheirFraction)
{
    EXPECT_EQ(dateFromUnixTime(1, 500'000'000), at(1.5));
    EXPECT_EQ(dateFromUnixTime(-1, 750'000'000), at(-0.25));
}

TEST(Clock, TheSystemsIsPastTheYearOfThisTest)
{
    EXPECT_GT(SystemClock{}.now(), *parseISO8601("2024-01-01T00:00:00Z"));
}

}  // namespace tidemark
