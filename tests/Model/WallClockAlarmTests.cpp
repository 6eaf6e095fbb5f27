#include "WallClockAlarm.h"

#include "Clock.h"
#include "ModelFixture.h"

namespace tidemark {

/// The real one. What is due is due at once here, so nothing waits.
class WallClockAlarmTest : public ModelTest {
protected:
    Date now() const { return SystemClock{}.now(); }

    int m_rings = 0;
};

TEST_F(WallClockAlarmTest, RingsOnceForADateThatIsPast)
{
    for (const double age : {0.0, 1.0, 1e6, 1e10}) {
        SCOPED_TRACE(age);
        WallClockAlarm alarm;
        alarm.onRing([&] { ++m_rings; });
        alarm.set(now() - Seconds{age});
        EXPECT_TRUE(runUntil([&] { return m_rings > 0; }));
        runPending();
        EXPECT_EQ(std::exchange(m_rings, 0), 1);
    }
}

TEST_F(WallClockAlarmTest, RingsAtItsTime)
{
    WallClockAlarm alarm;
    alarm.onRing([&] { ++m_rings; });
    const Date due = now() + Seconds{0.05};
    alarm.set(due);
    EXPECT_TRUE(runUntil([&] { return m_rings > 0; }));
    EXPECT_GE(now(), due);
}

TEST_F(WallClockAlarmTest, OnlyTheLastDateCounts)
{
    WallClockAlarm alarm;
    alarm.onRing([&] { ++m_rings; });
    alarm.set(now() - Seconds{1});
    alarm.set(now() + Seconds{1e6});
    runPending();
    EXPECT_EQ(m_rings, 0);
    alarm.set(now() - Seconds{1});
    alarm.cancel();
    runPending();
    EXPECT_EQ(m_rings, 0);
}

TEST_F(WallClockAlarmTest, TakesAnyDate)
{
    const double infinity = std::numeric_limits<double>::infinity();
    WallClockAlarm alarm;
    alarm.onRing([&] { ++m_rings; });
    for (const double seconds : {1e11, 1e18, 1e300, infinity}) {
        alarm.set(Date{Seconds{seconds}});
        runPending();
    }
    EXPECT_EQ(m_rings, 0);
    alarm.set(Date{Seconds{-infinity}});
    EXPECT_TRUE(runUntil([&] { return m_rings > 0; }));
}

}  // namespace tidemark
