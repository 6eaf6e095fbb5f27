#include "BootTimeCountdown.h"
#include "EventLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tidemark {

namespace {

/// By what clocks the timers of this process go, as the kernel tells.
std::vector<int> clocksOfTimers()
{
    const std::string key = "clockid:";
    std::vector<int> clocks;
    for (const auto& entry : std::filesystem::directory_iterator{"/proc/self/fdinfo"}) {
        std::ifstream info{entry.path()};
        for (std::string line; std::getline(info, line);)
            if (line.starts_with(key))
                clocks.push_back(std::stoi(line.substr(key.size())));
    }
    return clocks;
}

}  // namespace

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

TEST_F(BootTimeCountdownTest, GoesOnWhileTheMachineIsSuspended)
{
    const std::vector<int> before = clocksOfTimers();
    const BootTimeCountdown countdown;
    std::vector<int> clocks = clocksOfTimers();
    for (const int clock : before)
        clocks.erase(std::ranges::find(clocks, clock));
    // No other clock of the kernel that goes steadily counts the time of a suspend.
    EXPECT_EQ(clocks, std::vector<int>{CLOCK_BOOTTIME});
}

}  // namespace tidemark
