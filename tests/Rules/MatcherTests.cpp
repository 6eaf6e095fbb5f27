#include "Matcher.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tidemark;

namespace {

const Date now{Seconds(1714745100)};

FileInfo file(std::string name)
{
    return {.url = FileURL("/in/" + std::move(name)),
        .modified = now,
        .added = now,
        .lastOpened = now,
        .created = now,
        .frontMatter = std::nullopt,
        .isScreenCapture = false};
}

FileInfo capture(std::string name)
{
    FileInfo info = file(std::move(name));
    info.isScreenCapture = true;
    return info;
}

}  // namespace

TEST(Matcher, ComparesTheExtensionInLowerCase)
{
    struct Row {
        const char* name;
        std::vector<std::string> types;
        const char* file;
        bool matches;
    };
    for (const Row& row : {
             Row{"capital extension", {"png"}, "Shot.PNG", true},
             Row{"no extension", {"png"}, "Shot", false},
             Row{"another extension", {"png"}, "Shot.jpg", false},
             Row{"one of several", {"dmg", "pkg"}, "Setup.pkg", true},
             Row{"only the last extension", {"tar"}, "a.tar.gz", false},
             Row{"a list entry in capitals never matches", {"PNG"}, "Shot.PNG", false},
             Row{"the empty type means no extension", {""}, "Shot", true},
             Row{"a leading dot makes no extension", {"png"}, ".png", false},
             Row{"non-ASCII extension", {"ärm"}, "a.ÄRM", true},
             Row{"no types", {}, "Shot", true},
         }) {
        EXPECT_EQ(Matcher::matches({.fileTypes = row.types}, file(row.file), now), row.matches)
            << row.name;
    }
}

TEST(Matcher, MatchesTheWholeNameWithoutRegardToCase)
{
    const RuleMatch match{.namePattern = "Screenshot*"};

    EXPECT_TRUE(Matcher::matches(match, file("screenshot 2024.png"), now));
    EXPECT_FALSE(Matcher::matches(match, file(".Screenshot 2024.png"), now));
    EXPECT_FALSE(Matcher::matches(match, file("My Screenshot.png"), now));
}

TEST(Matcher, TakesAScreenCaptureByItsFlagOrByItsName)
{
    const RuleMatch match{.namePattern = "Screenshot*", .screenCaptureOnly = true};

    EXPECT_TRUE(Matcher::matches(match, capture("Bild 1.png"), now));
    EXPECT_TRUE(Matcher::matches(match, file("Screenshot x.png"), now));
    EXPECT_FALSE(Matcher::matches(match, file("Bild 1.png"), now));
}

TEST(Matcher, TakesAScreenCaptureByItsFlagAloneWithoutAPattern)
{
    const RuleMatch match{.screenCaptureOnly = true};

    EXPECT_TRUE(Matcher::matches(match, capture("Bild 1.png"), now));
    EXPECT_FALSE(Matcher::matches(match, file("Screenshot x.png"), now));
}

TEST(Matcher, CountsAnAbsentScreenCaptureConditionAsFalse)
{
    for (const std::optional<bool> only : {std::optional<bool>(), std::optional(false)}) {
        const RuleMatch match{.namePattern = "Screenshot*", .screenCaptureOnly = only};
        EXPECT_FALSE(Matcher::matches(match, capture("Bild 1.png"), now));
        EXPECT_TRUE(Matcher::matches(match, file("Screenshot.png"), now));
    }
}

TEST(Matcher, WantsTheMinimumAgeInSeconds)
{
    const RuleMatch match{.minAge = Seconds(86400), .ageBasis = AgeBasis::added};
    struct Row {
        const char* name;
        double age;
        bool matches;
    };
    for (const Row& row : {Row{"exactly", 86400, true}, Row{"a second less", 86399, false},
             Row{"a fraction less", 86399.99, false}, Row{"more", 90000, true},
             Row{"in the future", -1, false}}) {
        FileInfo info = file("a");
        info.added = now - Seconds(row.age);
        EXPECT_EQ(Matcher::matches(match, info, now), row.matches) << row.name;
    }
}

TEST(Matcher, MeasuresTheAgeFromTheDateThatIsAskedFor)
{
    FileInfo info = file("a");
    info.modified = now - Seconds(10);
    info.added = now - Seconds(20);
    info.lastOpened = now - Seconds(30);
    struct Row {
        AgeBasis basis;
        double age;
    };
    for (const Row& row :
        {Row{AgeBasis::modified, 10}, Row{AgeBasis::added, 20}, Row{AgeBasis::lastOpened, 30}}) {
        EXPECT_TRUE(
            Matcher::matches({.minAge = Seconds(row.age), .ageBasis = row.basis}, info, now));
        EXPECT_FALSE(
            Matcher::matches({.minAge = Seconds(row.age + 1), .ageBasis = row.basis}, info, now));
    }
}

TEST(Matcher, FailsAFutureDateForEveryAgeFromZeroOn)
{
    FileInfo info = file("a");
    info.modified = now + Seconds(5);

    EXPECT_FALSE(Matcher::matches({.minAge = Seconds(0)}, info, now));
    EXPECT_TRUE(Matcher::matches({.minAge = Seconds(-5)}, info, now));
}

TEST(Matcher, CountsAComparisonWithNaNAsOldEnough)
{
    const Seconds nan(std::numeric_limits<double>::quiet_NaN());

    EXPECT_TRUE(Matcher::matches({.minAge = nan}, file("a"), now));
}

TEST(Matcher, TellsApartWhetherAFileFitsAndWhetherItIsOldEnough)
{
    const RuleMatch match{
        .fileTypes = {"png"}, .minAge = Seconds(10), .ageBasis = AgeBasis::lastOpened};
    FileInfo old = file("a.png");
    old.lastOpened = now - Seconds(10);

    EXPECT_TRUE(Matcher::fitsApartFromAge(match, file("a.png")));
    EXPECT_FALSE(Matcher::fitsApartFromAge(match, file("a.jpg")));
    EXPECT_FALSE(Matcher::isOldEnough(match, file("a.png"), now));
    EXPECT_TRUE(Matcher::isOldEnough(match, old, now));
    EXPECT_TRUE(Matcher::isOldEnough({}, file("a.png"), now));
    EXPECT_EQ(Matcher::ageDate(match, old), old.lastOpened);
}

TEST(Matcher, MatchesEveryFileWithoutAnyCondition)
{
    for (const char* name : {"a", ".a", "a.png", "no extension", "ü"})
        EXPECT_TRUE(Matcher::matches({}, file(name), now)) << name;
}

TEST(Matcher, WantsAllConditionsTogether)
{
    const RuleMatch match{.fileTypes = {"png"},
        .namePattern = "a*",
        .minAge = Seconds(10),
        .ageBasis = AgeBasis::modified};
    FileInfo info = file("a.png");
    info.modified = now - Seconds(10);

    EXPECT_TRUE(Matcher::matches(match, info, now));
    EXPECT_FALSE(Matcher::matches(match, info, now - Seconds(1)));
    info.url = FileURL("/in/b.png");
    EXPECT_FALSE(Matcher::matches(match, info, now));
    info.url = FileURL("/in/a.jpg");
    EXPECT_FALSE(Matcher::matches(match, info, now));
}

TEST(Matcher, AsksForTheFlagOnlyWhereItDecides)
{
    const RuleMatch captures{
        .fileTypes = {"png"}, .namePattern = "Screenshot*", .screenCaptureOnly = true};
    RuleMatch nameOnly = captures;
    nameOnly.screenCaptureOnly = false;
    struct Row {
        const char* name;
        RuleMatch match;
        const char* file;
        bool asks;
    };
    for (const Row& row : {
             Row{"of the type, under another name", captures, "a.PNG", true},
             Row{"of the type, under the name", captures, "Screenshot 1.png", false},
             Row{"of another type", captures, "a.jpg", false},
             Row{"captures under any name", {.screenCaptureOnly = true}, "a", true},
             Row{"by the name alone", nameOnly, "a.png", false},
             Row{"without any condition", {}, "a.png", false},
         }) {
        EXPECT_EQ(Matcher::asksForFlag(row.match, row.file), row.asks) << row.name;
        // Where it does not ask, the flag must make no difference.
        if (!row.asks) {
            EXPECT_EQ(Matcher::fitsApartFromAge(row.match, file(row.file)),
                Matcher::fitsApartFromAge(row.match, capture(row.file)))
                << row.name;
        }
    }
}
