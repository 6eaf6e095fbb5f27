#include "ScreenshotNamer.h"

#include <gtest/gtest.h>

using namespace tidemark;

static const Date afternoon{Seconds(1714745100)};  // 2024-05-03 14:05 UTC

static TimeZone zone(std::string_view name)
{
    return TimeZone::named(name).value();
}

TEST(ScreenshotNamer, NamesByDateAppAndExtension)
{
    struct Row {
        const char* name;
        std::optional<std::string_view> app;
        const char* ext;
        const char* expected;
    };
    for (const Row& row : {
             Row{"no app", std::nullopt, "png", "2024-05-03 14.05.png"},
             Row{"app", "Preview", "png", "2024-05-03 14.05 Preview.png"},
             Row{"app with blanks around", " Preview ", "png", "2024-05-03 14.05 Preview.png"},
             Row{"app of blanks alone", "   ", "png", "2024-05-03 14.05.png"},
             Row{"app of tab and wide blank", "\t\u3000", "png", "2024-05-03 14.05.png"},
             Row{"newlines of an app stay", "\nA\n", "png", "2024-05-03 14.05 \nA\n.png"},
             Row{"empty app", "", "png", "2024-05-03 14.05.png"},
             Row{"empty extension", std::nullopt, "", "2024-05-03 14.05"},
             Row{"extension as given", std::nullopt, "PnG", "2024-05-03 14.05.PnG"},
         }) {
        EXPECT_EQ(ScreenshotNamer::fileName(afternoon, row.app, row.ext, zone("UTC")), row.expected)
            << row.name;
    }
}

TEST(ScreenshotNamer, NamesOneMomentDifferentlyInDifferentTimeZones)
{
    EXPECT_EQ(ScreenshotNamer::fileName(afternoon, {}, "png", zone("Europe/Berlin")),
        "2024-05-03 16.05.png");
    EXPECT_EQ(ScreenshotNamer::fileName(afternoon, {}, "png", zone("Asia/Kolkata")),
        "2024-05-03 19.35.png");
    EXPECT_EQ(ScreenshotNamer::fileName(afternoon, {}, "png", zone("Pacific/Kiritimati")),
        "2024-05-04 04.05.png");
}

TEST(ScreenshotNamer, NamesTwoMomentsOfOneMinuteAlike)
{
    const TimeZone utc = zone("UTC");

    EXPECT_EQ(ScreenshotNamer::fileName(afternoon, {}, "png", utc),
        ScreenshotNamer::fileName(afternoon + Seconds(59.9), {}, "png", utc));
}

TEST(ScreenshotNamer, NamesUnusualDates)
{
    struct Row {
        const char* name;
        double seconds;
        const char* zone;
        const char* expected;
    };
    for (const Row& row : {
             Row{"a second before 1970", -1, "UTC", "1969-12-31 23.59.png"},
             Row{"a fraction before 1970", -0.5, "UTC", "1969-12-31 23.59.png"},
             Row{"far future", 32503680000, "UTC", "3000-01-01 00.00.png"},
             Row{"distant past", distantPast.time_since_epoch().count(), "UTC",
                 "0001-01-01 00.00.png"},
             Row{"first 2.30 of the night in which clocks go back", 1729989000, "Europe/Berlin",
                 "2024-10-27 02.30.png"},
             Row{"second 2.30 of that night", 1729992600, "Europe/Berlin", "2024-10-27 02.30.png"},
             Row{"just before clocks go forward", 1711846799, "Europe/Berlin",
                 "2024-03-31 01.59.png"},
             Row{"just after", 1711846800, "Europe/Berlin", "2024-03-31 03.00.png"},
         }) {
        EXPECT_EQ(ScreenshotNamer::fileName(
                      Date(Seconds(row.seconds)), std::nullopt, "png", zone(row.zone)),
            row.expected)
            << row.name;
    }
}
