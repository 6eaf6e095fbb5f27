#include "DrainPace.h"

#include <gtest/gtest.h>

namespace tidemark {

using namespace std::chrono_literals;

TEST(DrainPace, DoesNotPauseWhenNothingHappened)
{
    DrainPace pace;
    EXPECT_EQ(pace.pauseAfter(0), 0ms);
}

TEST(DrainPace, PausesLongerAndLongerInATrickle)
{
    DrainPace pace;
    for (const auto expected : {20ms, 40ms, 80ms, 160ms, 160ms})
        EXPECT_EQ(pace.pauseAfter(1), expected);
    pace.pauseAfter(0);
    EXPECT_EQ(pace.pauseAfter(1), 20ms);
}

TEST(DrainPace, PausesShortlyAfterARest)
{
    DrainPace pace;
    pace.pauseAfter(1);
    pace.pauseAfter(1);
    pace.rested(100ms);
    EXPECT_EQ(pace.pauseAfter(1), 80ms);
    pace.rested(160ms);
    EXPECT_EQ(pace.pauseAfter(1), 20ms);
}

TEST(DrainPace, PausesShortlyInAStorm)
{
    DrainPace pace;
    pace.pauseAfter(1);
    pace.pauseAfter(1);
    EXPECT_EQ(pace.pauseAfter(10'000), 20ms);
    EXPECT_EQ(pace.pauseAfter(10'000), 20ms);
}

}  // namespace tidemark
