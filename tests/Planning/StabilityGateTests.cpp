#include "StabilityGate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;

static const Date now{Seconds(1714745100)};

static FileInfo file(std::string name, Date modified)
{
    // Every other date is of this moment, to see that only the modification date counts.
    return {.url = FileURL("/in/" + std::move(name)),
        .modified = modified,
        .added = now,
        .lastOpened = now,
        .created = now,
        .frontMatter = std::nullopt,
        .isScreenCapture = false};
}

TEST(StabilityGate, KnowsTheEndingsOfUnfinishedFilesInTheirOrder)
{
    EXPECT_THAT(StabilityGate::inProgressSuffixes,
        testing::ElementsAre(".download", ".crdownload", ".part", ".partial", ".tmp"));
}

TEST(StabilityGate, NeverLetsUnfinishedFilesThrough)
{
    struct Row {
        const char* name;
        bool isStable;
    };
    for (const Row& row : {
             Row{"Setup.DMG.CRDOWNLOAD", false},
             Row{"movie.part", false},
             Row{"movie.PARTIAL", false},
             Row{"x.Download", false},
             Row{"x.tmp", false},
             Row{".tmp", false},
             Row{"movie.partial.mp4", true},
             Row{"part", true},
             Row{"x.parts", true},
             Row{"tmp", true},
         }) {
        EXPECT_EQ(
            StabilityGate::isStable(file(row.name, distantPast), Seconds(60), now), row.isStable)
            << row.name;
    }
}

TEST(StabilityGate, LetsAFileThroughOnceItHasRestedForTheGracePeriod)
{
    struct Row {
        const char* name;
        double age;
        double gracePeriod;
        bool isStable;
    };
    for (const Row& row : {
             Row{"exactly", 60, 60, true},
             Row{"less", 59.9, 60, false},
             Row{"more", 61, 60, true},
             Row{"none wanted", 0, 0, true},
             Row{"from the future", -1, 0, false},
             Row{"a fraction", 0.5, 0.5, true},
         }) {
        EXPECT_EQ(StabilityGate::isStable(
                      file("a.txt", now - Seconds(row.age)), Seconds(row.gracePeriod), now),
            row.isStable)
            << row.name;
    }
}

TEST(StabilityGate, JudgesAnUnfinishedEndingInTheMiddleOfANameByItsAgeAlone)
{
    EXPECT_FALSE(StabilityGate::isStable(file("movie.partial.mp4", now), Seconds(60), now));
    EXPECT_TRUE(
        StabilityGate::isStable(file("movie.partial.mp4", now - Seconds(60)), Seconds(60), now));
}

TEST(StabilityGate, TellsApartWhatHasRestedAndWhatIsUnfinished)
{
    EXPECT_TRUE(StabilityGate::hasRested(file("a.part", now - Seconds(60)), Seconds(60), now));
    EXPECT_FALSE(StabilityGate::hasRested(file("a.txt", now), Seconds(60), now));
    EXPECT_TRUE(StabilityGate::isInProgress(file("a.PART", now)));
    EXPECT_FALSE(StabilityGate::isInProgress(file("a.txt", now)));
}

TEST(StabilityGate, LetsAFileOfUnknownAgeThroughAtOnce)
{
    EXPECT_TRUE(StabilityGate::isStable(file("a.txt", distantPast), Seconds(60), now));
}
