#include "Debouncer.h"

#include "ManualTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DebouncerTest : public testing::Test {
protected:
    /// Schedules an action that notes `number` with the time that has passed since the beginning.
    void schedule(int number)
    {
        m_debouncer.schedule([this, number] {
            m_ran.push_back(number);
            m_ranAfter = m_time.now() - m_beginning;
        });
    }

    std::vector<int> ran()
    {
        m_queue.barrier();
        return m_ran;
    }

    ManualTime m_time;
    TimeSource::Instant m_beginning = m_time.now();
    std::vector<int> m_ran;
    Seconds m_ranAfter{-1};
    SerialQueue m_queue{"io.tidemark.test", m_time};
    Debouncer m_debouncer{Seconds{1}, m_queue};
};

}  // namespace

TEST_F(DebouncerTest, RunsTheActionOnceWhenTheIntervalHasPassed)
{
    schedule(1);
    m_time.advance(Seconds{0.9});
    EXPECT_THAT(ran(), IsEmpty());
    m_time.advance(Seconds{0.1});
    EXPECT_THAT(ran(), ElementsAre(1));
    m_time.advance(Seconds{10});
    EXPECT_THAT(ran(), ElementsAre(1));
}

TEST_F(DebouncerTest, TenCallsCloseTogetherRunTheLastActionOneIntervalAfterTheTenth)
{
    for (int call = 1; call <= 10; ++call) {
        if (call > 1)
            m_time.advance(Seconds{0.2});
        schedule(call);
        EXPECT_THAT(ran(), IsEmpty());
    }
    m_time.advance(Seconds{0.999});
    EXPECT_THAT(ran(), IsEmpty());
    m_time.advance(Seconds{0.001});
    EXPECT_THAT(ran(), ElementsAre(10));
    EXPECT_NEAR(m_ranAfter.count(), 2.8, 1e-6);
}

TEST_F(DebouncerTest, AnUnbrokenStreamOfCallsPostponesTheActionForAsLongAsItLasts)
{
    for (int call = 0; call < 1000; ++call) {
        schedule(call);
        m_time.advance(Seconds{0.9});
    }
    EXPECT_THAT(ran(), IsEmpty());
    m_time.advance(Seconds{0.1});
    EXPECT_THAT(ran(), ElementsAre(999));
}

TEST_F(DebouncerTest, CallsFurtherApartThanTheIntervalRunEach)
{
    for (const int call : {1, 2, 3}) {
        schedule(call);
        m_time.advance(Seconds{1});
        m_queue.barrier();
    }
    EXPECT_THAT(ran(), ElementsAre(1, 2, 3));
}

TEST_F(DebouncerTest, CancelForgetsThePendingActionAndWhatItHolds)
{
    const auto held = std::make_shared<int>(0);
    m_debouncer.schedule([this, held] { m_ran.push_back(*held); });
    m_debouncer.cancel();
    EXPECT_EQ(held.use_count(), 1);
    m_time.advance(Seconds{2});
    EXPECT_THAT(ran(), IsEmpty());
}

TEST_F(DebouncerTest, CancelWithNothingPendingIsHarmless)
{
    m_debouncer.cancel();
    schedule(1);
    m_time.advance(Seconds{1});
    EXPECT_THAT(ran(), ElementsAre(1));
    m_debouncer.cancel();
    m_debouncer.cancel();
}

TEST_F(DebouncerTest, SchedulesAgainAfterTheActionHasRunOrWasCancelled)
{
    schedule(1);
    m_time.advance(Seconds{1});
    m_queue.barrier();
    schedule(2);
    m_debouncer.cancel();
    schedule(3);
    m_time.advance(Seconds{1});
    EXPECT_THAT(ran(), ElementsAre(1, 3));
}

TEST_F(DebouncerTest, AnActionMayScheduleTheNext)
{
    m_debouncer.schedule([this] { schedule(1); });
    m_time.advance(Seconds{1});
    m_queue.barrier();
    m_time.advance(Seconds{1});
    EXPECT_THAT(ran(), ElementsAre(1));
}

}  // namespace tidemark
