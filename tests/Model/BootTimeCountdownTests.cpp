#include "BootTimeCountdown.h"
#include "EventLoop.h"

#include <gtest/gtest.h>

namespace tidemark {

class BootTimeCountdownTest : public testing::Test {
protected:
    BootTimeCountdownTest() { requireApplication(); }
};

TEST_F(BootTimeCountdownTest, RingsOnce)
{
    BootTimeCountdown countdown;
    int rings = 0;
    countdown.start(Seconds{0.001}, [&] { ++rings; });
    EXPECT_EQ(rings, 0);
    EXPECT_TRUE(runUntil([&] { return rings > 0; }));
    BootTimeCountdown other;
    bool isOver = false;
    other.start(Seconds{0.05}, [&] { isOver = true; });
    EXPECT_TRUE(runUntil([&] { return isOver; }));
    EXPECT_EQ(rings, 1);
}

TEST_F(BootTimeCountdownTest, MayBeStartedAgainWhenItRings)
{
    BootTimeCountdown countdown;
    int rings = 0;
    std::function<void()> again = [&] {
        if (++rings < 3)
            countdown.start(Seconds{0}, again);
    };
    countdown.start(Seconds{0}, again);
    EXPECT_TRUE(runUntil([&] { return rings == 3; }));
}

TEST_F(BootTimeCountdownTest, AnotherStartTakesThePlaceOfTheFirst)
{
    BootTimeCountdown countdown;
    int first = 0;
    bool second = false;
    countdown.start(Seconds{0.001}, [&] { ++first; });
    countdown.start(Seconds{0.002}, [&] { second = true; });
    EXPECT_TRUE(runUntil([&] { return second; }));
    EXPECT_EQ(first, 0);
}

TEST_F(BootTimeCountdownTest, DoesNotRingWhenItWasCancelled)
{
    BootTimeCountdown countdown;
    BootTimeCountdown other;
    bool rang = false;
    bool isOver = false;
    countdown.start(Seconds{0.001}, [&] { rang = true; });
    countdown.cancel();
    other.start(Seconds{0.02}, [&] { isOver = true; });
    EXPECT_TRUE(runUntil([&] { return isOver; }));
    EXPECT_FALSE(rang);
}

}  // namespace tidemark
