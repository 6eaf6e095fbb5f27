#include "SafetyFixture.h"

#include <csignal>

namespace tidemark {
namespace {

using KilledAnywhere = SafetyTest;

/// What all kills of one scenario came to.
struct Tally {
    std::size_t points = 0;
    std::size_t trashWindow = 0;
    std::size_t linkWindow = 0;
    std::size_t copies = 0;
    std::size_t temporaries = 0;
    std::size_t placeholders = 0;

    void add(const Leftovers& leftovers)
    {
        ++points;
        trashWindow += leftovers.inTrashWindow.empty() ? 0U : 1U;
        linkWindow += leftovers.inLinkWindow.empty() ? 0U : 1U;
        copies += leftovers.copied.empty() ? 0U : 1U;
        temporaries += leftovers.temporaries > 0 ? 1U : 0U;
        placeholders += leftovers.placeholders > 0 ? 1U : 0U;
    }

    std::string text() const
    {
        return std::to_string(points) + " kill points, " + std::to_string(trashWindow)
            + " of them in the trash window, " + std::to_string(linkWindow)
            + " of them in the link window, " + std::to_string(copies)
            + " of them left a complete copy behind, " + std::to_string(temporaries)
            + " of them left a hidden temporary file behind, " + std::to_string(placeholders)
            + " of them left an empty placeholder behind";
    }
};

/// Kills the program at its `index`-th changing call; false when it makes no such call.
bool killAt(std::size_t index, CallVerdict::Kind moment, const World& world)
{
    std::size_t seen = 0;
    std::string at;
    const TracedOutcome outcome = world.run([&](const FileCall& call) -> CallVerdict {
        if (!call.changesTheDisk() || seen++ != index)
            return {};
        at = call.text();
        return {moment};
    });
    EXPECT_FALSE(outcome.didHang);
    if (at.empty()) {
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return false;
    }
    EXPECT_EQ(outcome.status, -SIGKILL) << at;
    return true;
}

TEST_P(KilledAnywhere, LeavesEveryFileAndUndoBringsAllBack)
{
    inWorld([](World& world) {
        Tally tally;
        for (std::size_t index = 0;; ++index) {
            bool wasLast = false;
            for (const auto moment :
                {CallVerdict::Kind::killBefore, CallVerdict::Kind::killAfter}) {
                SCOPED_TRACE(testing::Message()
                    << "killed " << (moment == CallVerdict::Kind::killBefore ? "before" : "after")
                    << " call " << index);
                world.reset();
                wasLast = !killAt(index, moment, world);
                if (wasLast)
                    break;
                const Leftovers leftovers = world.check();
                tally.add(leftovers);
                const bool sweepsFirst = tally.points % 2 == 0;
                world.bringBack(leftovers, sweepsFirst);
                if (testing::Test::HasFailure())
                    return;
            }
            if (wasLast)
                break;
        }
        EXPECT_TRUE(world.isDone());
        EXPECT_GT(tally.points, 10U);
        printCounts(tally.text());
    });
}

INSTANTIATE_TEST_SUITE_P(Safety, KilledAnywhere, testing::ValuesIn(everyScenario()), scenarioName);

}  // namespace
}  // namespace tidemark
