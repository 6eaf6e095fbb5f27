#include "MainQueue.h"

#include "ModelFixture.h"

#include <thread>

namespace tidemark {

using testing::ElementsAre;

/// Work of other threads in the event loop of the tests.
using MainQueueTest = ModelTest;

TEST_F(MainQueueTest, RunsWorkInOrderOnTheThreadThatMadeIt)
{
    MainQueue queue;
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::thread other{[&] {
        for (int number = 0; number < 1000; ++number)
            queue.post([&, number] {
                order.push_back(number);
                threads.push_back(std::this_thread::get_id());
            });
    }};
    EXPECT_TRUE(runUntil([&] { return order.size() == 1000; }));
    other.join();
    EXPECT_TRUE(std::ranges::is_sorted(order));
    EXPECT_THAT(threads, testing::Each(std::this_thread::get_id()));
}

TEST_F(MainQueueTest, MuchWorkDoesNotKeepTheEventLoopFromOtherThings)
{
    MainQueue queue;
    int done = 0;
    for (int number = 0; number < 1000; ++number)
        queue.post([&] { ++done; });
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_GT(done, 0);
    EXPECT_LT(done, 1000);
    EXPECT_TRUE(runUntil([&] { return done == 1000; }));
}

TEST_F(MainQueueTest, WorkMayPostWork)
{
    MainQueue queue;
    std::vector<int> order;
    queue.post([&] {
        order.push_back(1);
        queue.post([&] { order.push_back(3); });
    });
    queue.post([&] { order.push_back(2); });
    EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(MainQueueTest, WorkMayDestroyTheQueueAndTheRestIsDropped)
{
    auto queue = std::make_unique<MainQueue>();
    bool hasRunMore = false;
    const auto held = std::make_shared<int>(0);
    queue->post([&] { queue.reset(); });
    queue->post([&, held] { hasRunMore = true; });
    EXPECT_TRUE(runUntil([&] { return !queue; }));
    runPending();
    EXPECT_FALSE(hasRunMore);
    EXPECT_EQ(held.use_count(), 1);
}

}  // namespace tidemark
