#include "SerialQueue.h"

#include "ManualTime.h"
#include "Tally.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <linux/ioprio.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tidemark {

using testing::ElementsAre;

namespace {

constexpr const char* label = "io.tidemark.test";

/// A queue on a clock of its own, and the order in which its work ran.
class SerialQueueTest : public testing::Test {
protected:
    SerialQueue::Work append(int number)
    {
        return [this, number] { m_order.push_back(number); };
    }

    std::vector<int> order()
    {
        m_queue.barrier();
        return m_order;
    }

    ManualTime m_time;
    std::vector<int> m_order;
    SerialQueue m_queue{label, m_time};
};

}  // namespace

TEST_F(SerialQueueTest, RunsWorkInTheOrderInWhichItWasGiven)
{
    for (const int number : {1, 2, 3})
        m_queue.async(append(number));
    EXPECT_THAT(order(), ElementsAre(1, 2, 3));
}

TEST_F(SerialQueueTest, RunsOnePieceOfWorkAtATimeWhoeverGivesIt)
{
    int running = 0;
    int most = 0;
    std::vector<std::thread> givers;
    for (int giver = 0; giver < 4; ++giver) {
        givers.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                m_queue.async([&] {
                    most = std::max(most, ++running);
                    --running;
                });
            }
        });
    }
    for (std::thread& giver : givers)
        giver.join();
    m_queue.barrier();
    EXPECT_EQ(most, 1);
}

TEST_F(SerialQueueTest, NamesItsThreadAfterTheLastPartOfTheLabel)
{
    std::array<char, 16> name{};
    m_queue.async([&] { ::pthread_getname_np(::pthread_self(), name.data(), name.size()); });
    m_queue.barrier();
    EXPECT_STREQ(name.data(), "test");
    EXPECT_EQ(m_queue.label(), label);
}

TEST_F(SerialQueueTest, KnowsWhetherTheCallerRunsOnIt)
{
    bool isCurrent = false;
    m_queue.async([&] {
        isCurrent = m_queue.isCurrent();
        m_queue.barrier();
    });
    m_queue.barrier();
    EXPECT_TRUE(isCurrent);
    EXPECT_FALSE(m_queue.isCurrent());
}

TEST_F(SerialQueueTest, RunsDelayedWorkWhenItsTimeHasCome)
{
    m_queue.asyncAfter(Seconds{1}, append(1));
    m_time.advance(Seconds{0.999});
    EXPECT_THAT(order(), ElementsAre());
    m_time.advance(Seconds{0.001});
    EXPECT_THAT(order(), ElementsAre(1));
    m_time.advance(Seconds{10});
    EXPECT_THAT(order(), ElementsAre(1));
}

TEST_F(SerialQueueTest, RunsDelayedWorkByItsTimeAndThenByItsOrder)
{
    m_queue.asyncAfter(Seconds{2}, append(4));
    m_queue.asyncAfter(Seconds{1}, append(2));
    m_queue.asyncAfter(Seconds{1}, append(3));
    m_queue.asyncAfter(Seconds{0}, append(1));
    m_time.advance(Seconds{5});
    EXPECT_THAT(order(), ElementsAre(1, 2, 3, 4));
}

TEST_F(SerialQueueTest, DelayedWorkThatIsDueRunsBeforeWorkThatIsGivenNow)
{
    m_queue.asyncAfter(Seconds{1}, append(1));
    m_time.advance(Seconds{1});
    m_queue.async(append(2));
    EXPECT_THAT(order(), ElementsAre(1, 2));
}

TEST_F(SerialQueueTest, CancelledWorkDoesNotRunAndIsReleased)
{
    const auto held = std::make_shared<int>(0);
    SerialQueue::DelayedWork work =
        m_queue.asyncAfter(Seconds{1}, [this, held] { m_order.push_back(*held); });
    EXPECT_EQ(held.use_count(), 2);
    work.cancel();
    EXPECT_EQ(held.use_count(), 1);
    m_time.advance(Seconds{1});
    EXPECT_THAT(order(), ElementsAre());
}

TEST_F(SerialQueueTest, WorkThatIsDueButHasNotBegunCanBeCancelled)
{
    SerialQueue::DelayedWork work;
    std::promise<void> isDue;
    m_queue.async([&] { isDue.get_future().wait(); });
    work = m_queue.asyncAfter(Seconds{1}, append(1));
    m_time.advance(Seconds{1});
    m_queue.async(append(2));
    work.cancel();
    isDue.set_value();
    EXPECT_THAT(order(), ElementsAre(2));
}

TEST_F(SerialQueueTest, CancellingWorkThatHasRunIsHarmless)
{
    SerialQueue::DelayedWork work = m_queue.asyncAfter(Seconds{1}, append(1));
    m_time.advance(Seconds{1});
    EXPECT_THAT(order(), ElementsAre(1));
    work.cancel();
    work.cancel();
    SerialQueue::DelayedWork{}.cancel();
}

TEST_F(SerialQueueTest, CancellingAfterTheQueueHasGoneIsHarmless)
{
    SerialQueue::DelayedWork work;
    {
        SerialQueue other{label, m_time};
        work = other.asyncAfter(Seconds{1}, append(1));
    }
    work.cancel();
    m_time.advance(Seconds{1});
    EXPECT_THAT(order(), ElementsAre());
}

TEST_F(SerialQueueTest, WorkMayGiveMoreWorkAndCancelOther)
{
    SerialQueue::DelayedWork other = m_queue.asyncAfter(Seconds{2}, append(9));
    m_queue.asyncAfter(Seconds{1}, [&] {
        other.cancel();
        m_queue.async(append(1));
    });
    m_time.advance(Seconds{1});
    m_queue.barrier();
    m_time.advance(Seconds{5});
    EXPECT_THAT(order(), ElementsAre(1));
}

TEST_F(SerialQueueTest, DestructionWaitsForRunningWorkAndDropsTheRest)
{
    std::promise<void> begun;
    std::promise<void> dropped;
    bool hasEnded = false;
    bool ranMore = false;
    std::shared_ptr<int> held{new int{0}, [&](const int* value) {
                                  delete value;
                                  dropped.set_value();
                              }};
    std::optional<SerialQueue> queue;
    queue.emplace(label, m_time);
    queue->async([&] {
        begun.set_value();
        dropped.get_future().wait();
        hasEnded = true;
    });
    queue->async([&ranMore, held] { ranMore = true; });
    queue->asyncAfter(Seconds{0}, [&ranMore, held] { ranMore = true; });
    begun.get_future().wait();
    held.reset();
    queue.reset();
    EXPECT_TRUE(hasEnded);
    EXPECT_FALSE(ranMore);
}

TEST_F(SerialQueueTest, WorkMayDestroyItsOwnQueue)
{
    Tally destroyed;
    auto queue = std::make_unique<SerialQueue>(label, m_time);
    SerialQueue& given = *queue;
    std::promise<void> isMoved;
    given.async([&destroyed, &isMoved, &queue] {
        isMoved.get_future().wait();
        queue.reset();
        destroyed.add();
    });
    isMoved.set_value();
    EXPECT_TRUE(destroyed.reaches(1));
}

TEST_F(SerialQueueTest, TheSystemsClockRunsDelayedWorkByItself)
{
    SteadyTime time;
    Tally ran;
    SerialQueue queue{label, time};
    const auto given = time.now();
    queue.asyncAfter(Seconds{0.01}, [&] { ran.add(); });
    ASSERT_TRUE(ran.reaches(1));
    EXPECT_GE(time.now() - given, std::chrono::milliseconds{10});
}

TEST_F(SerialQueueTest, LowPriorityIsForTheProcessorAndTheDisk)
{
    struct Priority {
        int nice = 0;
        long io = 0;
    };
    const auto priorityOn = [](SerialQueue& queue) {
        Priority priority;
        queue.async([&] {
            const auto thread = static_cast<id_t>(::gettid());
            priority = {::getpriority(PRIO_PROCESS, thread), ::syscall(SYS_ioprio_get, 1, thread)};
        });
        queue.barrier();
        return priority;
    };
    SerialQueue low{label, m_time, SerialQueue::Priority::low};
    const Priority normal = priorityOn(m_queue);
    const Priority lowered = priorityOn(low);
    EXPECT_EQ(normal.nice, ::getpriority(PRIO_PROCESS, 0));
    EXPECT_EQ(lowered.nice, std::max(normal.nice, 10));
    EXPECT_EQ(lowered.io, IOPRIO_PRIO_VALUE(IOPRIO_CLASS_BE, 7));
    EXPECT_NE(normal.io, lowered.io);
}

}  // namespace tidemark
