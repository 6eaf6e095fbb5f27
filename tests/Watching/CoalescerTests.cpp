#include "Coalescer.h"

#include <gtest/gtest.h>

namespace tidemark {

using namespace std::chrono_literals;

namespace {

constexpr Coalescer::Instant start{10s};

}  // namespace

TEST(Coalescer, HasNothingToDeliverUntilSomethingChanges)
{
    Coalescer coalescer{500ms};
    EXPECT_FALSE(coalescer.due());
    EXPECT_FALSE(coalescer.take(start));
    EXPECT_FALSE(coalescer.takeEarly(start));
}

TEST(Coalescer, DeliversTheFirstChangeAfterAQuietTimeAtOnce)
{
    Coalescer coalescer{500ms};
    coalescer.note(start);
    EXPECT_TRUE(coalescer.take(start));
    coalescer.note(start + 500ms);
    EXPECT_TRUE(coalescer.take(start + 500ms));
}

TEST(Coalescer, CollectsWhatFollowsUntilTheWindowIsOver)
{
    Coalescer coalescer{500ms};
    coalescer.note(start);
    ASSERT_TRUE(coalescer.take(start));
    coalescer.note(start + 1ms);
    coalescer.note(start + 499ms);
    EXPECT_EQ(coalescer.due(), start + 500ms);
    EXPECT_FALSE(coalescer.take(start + 499ms));
    EXPECT_TRUE(coalescer.take(start + 500ms));
    EXPECT_FALSE(coalescer.take(start + 500ms));
}

TEST(Coalescer, ADeliveryAheadOfItsTimeOpensTheNextWindow)
{
    Coalescer coalescer{500ms};
    coalescer.note(start);
    ASSERT_TRUE(coalescer.take(start));
    coalescer.note(start + 100ms);
    EXPECT_TRUE(coalescer.takeEarly(start + 100ms));
    coalescer.note(start + 200ms);
    EXPECT_EQ(coalescer.due(), start + 600ms);
}

}  // namespace tidemark
