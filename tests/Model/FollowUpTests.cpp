#include "FollowUp.h"

#include <gtest/gtest.h>

namespace tidemark {

namespace {

const Date start{Seconds{1'800'000'000}};

Date after(double seconds)
{
    return start + Seconds{seconds};
}

}  // namespace

TEST(FollowUp, NothingIsDueAtFirst)
{
    FollowUp followUp;
    EXPECT_EQ(followUp.due(), std::nullopt);
    EXPECT_FALSE(followUp.take(after(1e9)));
}

TEST(FollowUp, ASweepIsDueWhenTheFirstFileComesOfAge)
{
    FollowUp followUp;
    followUp.didSweep(after(60), start);
    EXPECT_FALSE(followUp.take(after(59.9)));
    EXPECT_TRUE(followUp.take(after(60)));
    EXPECT_FALSE(followUp.take(after(60)));
    EXPECT_EQ(followUp.due(), std::nullopt);
}

TEST(FollowUp, EachSweepReplacesWhatTheOneBeforeFound)
{
    FollowUp followUp;
    followUp.didSweep(after(60), start);
    followUp.didSweep(after(90), start);
    EXPECT_EQ(followUp.due(), after(90));
    followUp.didSweep(std::nullopt, start);
    EXPECT_EQ(followUp.due(), std::nullopt);
}

TEST(FollowUp, SweepsDoNotFollowEachOtherAtOnce)
{
    FollowUp followUp;
    for (const double due : {-1e6, 0.0, 0.5}) {
        followUp.didSweep(after(due), start);
        EXPECT_EQ(followUp.due(), after(1));
    }
}

TEST(FollowUp, PausesGrowWithEveryFailureUpToAnHour)
{
    FollowUp followUp;
    Date now = start;
    for (const double pause : {60.0, 120.0, 240.0, 480.0, 960.0, 1920.0, 3600.0, 3600.0}) {
        followUp.didFail(now);
        ASSERT_EQ(followUp.due(), now + Seconds{pause});
        now += Seconds{pause};
        ASSERT_TRUE(followUp.take(now));
    }
    followUp.didSweep(std::nullopt, now);
    EXPECT_EQ(followUp.due(), std::nullopt);
    followUp.didFail(now);
    EXPECT_EQ(followUp.due(), now + Seconds{60});
}

TEST(FollowUp, FailuresThatEventsLedToDoNotMakeThePausesGrow)
{
    FollowUp followUp;
    for (int event = 0; event < 7; ++event) {
        followUp.didFail(after(event));
        EXPECT_EQ(followUp.due(), after(event + 60));
    }
}

TEST(FollowUp, AClockThatIsSetBackDoesNotPutOffAnotherTry)
{
    FollowUp followUp;
    followUp.didFail(start);
    const Date longAgo = after(-1e6);
    EXPECT_FALSE(followUp.take(longAgo));
    EXPECT_EQ(followUp.due(), longAgo + Seconds{60});
}

TEST(FollowUp, AClockThatIsSetBackDoesNotMakeFilesOlder)
{
    FollowUp followUp;
    followUp.didSweep(after(60), start);
    EXPECT_FALSE(followUp.take(after(-1e6)));
    EXPECT_EQ(followUp.due(), after(60));
}

TEST(FollowUp, APlannedSweepDoesNotBeginTooEarly)
{
    FollowUp followUp;
    followUp.didPlan(start, after(60));
    EXPECT_EQ(followUp.due(), after(60));
    followUp.didPlan(after(90), after(60));
    EXPECT_EQ(followUp.due(), after(90));
    followUp.didPlan(std::nullopt, after(60));
    EXPECT_EQ(followUp.due(), std::nullopt);
}

TEST(FollowUp, CancellingForgetsFailuresToo)
{
    FollowUp followUp;
    followUp.didFail(start);
    EXPECT_TRUE(followUp.take(after(60)));
    followUp.didFail(after(60));
    followUp.cancel();
    EXPECT_EQ(followUp.due(), std::nullopt);
    followUp.didFail(start);
    EXPECT_EQ(followUp.due(), after(60));
}

}  // namespace tidemark
