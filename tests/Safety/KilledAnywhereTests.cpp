#include "SafetyFixture.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <set>

namespace tidemark {
namespace {

using KilledAnywhere = SafetyTest;

/// What all kills of one scenario came to.
class Tally {
public:
    void add(const Leftovers& leftovers)
    {
        ++m_points;
        count("kill points in the trash window", !leftovers.inTrashWindow.empty());
        count("kill points in the link window", !leftovers.inLinkWindow.empty());
        count("kill points that left a complete copy behind", !leftovers.copied.empty());
        count("kill points that left a hidden temporary file", leftovers.temporaries > 0);
        count("kill points that left an empty placeholder", leftovers.placeholders > 0);
        count("kill points between a note of trashing and the trashing",
            !leftovers.announced.empty());
    }

    std::size_t points() const { return m_points; }

    std::string text() const
    {
        std::string text = std::to_string(m_points) + " kill points";
        for (const auto& [name, count] : m_special)
            text += ", " + std::to_string(count) + ' ' + name;
        return text;
    }

private:
    void count(const char* name, bool applies)
    {
        if (applies)
            ++m_special[name];
    }

    std::size_t m_points = 0;
    std::map<std::string, std::size_t> m_special;
};

/// A copy can be left only by what copies, and so on.
void requireOnlyKnownLeftovers(const Leftovers& leftovers, const Scenario& scenario)
{
    const auto isOne = [&](std::initializer_list<const char*> names) {
        return std::ranges::any_of(
            names, [&](const char* name) { return scenario.name.ends_with(name); });
    };
    EXPECT_TRUE(leftovers.copied.empty() || scenario.needsDisk);
    EXPECT_TRUE(leftovers.inLinkWindow.empty() || isOne({"ByLinks"}));
    EXPECT_TRUE(leftovers.temporaries == 0 || isOne({"ByNamedTemporaries"}));
    EXPECT_TRUE(leftovers.placeholders == 0 || isOne({"ByPlaceholders"}));
    EXPECT_TRUE(leftovers.inTrashWindow.empty() || scenario.command == "sweep");
    EXPECT_TRUE(leftovers.withdrawn.empty());
    EXPECT_TRUE(leftovers.unknownCopies.empty());

    std::set<std::string> onTheirWay = leftovers.inTrashWindow;
    onTheirWay.insert(leftovers.inLinkWindow.begin(), leftovers.inLinkWindow.end());
    onTheirWay.insert(leftovers.copied.begin(), leftovers.copied.end());
    EXPECT_LE(onTheirWay.size(), 1U);
}

/// Kills the program at its `index`-th changing call; false when it makes no such call.
bool killAt(std::size_t index, CallVerdict::Kind moment, const World& world)
{
    std::size_t seen = 0;
    std::string at;
    const TracedOutcome outcome = world.run([&](const TracedCall& call) -> CallVerdict {
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

/// The disk after one call is the disk before the next one, so the short form leaves the kills before them
/// out.
std::vector<CallVerdict::Kind> moments()
{
    if (wantsLongTests())
        return {CallVerdict::Kind::killBefore, CallVerdict::Kind::killAfter};
    return {CallVerdict::Kind::killAfter};
}

/// Kills the program at that call and looks at what is left, now and after the next start. False when there
/// is no such call.
bool survivesKillAt(std::size_t index, World& world, Tally& tally)
{
    for (const CallVerdict::Kind moment : moments()) {
        const bool isBefore = moment == CallVerdict::Kind::killBefore;
        SCOPED_TRACE(testing::Message()
            << "killed " << (isBefore ? "before" : "after") << " call " << index);
        world.reset();
        if (!killAt(index, moment, world))
            return false;
        const Leftovers leftovers = world.check();
        requireOnlyKnownLeftovers(leftovers, world.scenario());
        tally.add(leftovers);
        world.bringBack(leftovers, isBefore == (index % 2 == 0));
    }
    return !testing::Test::HasFailure();
}

TEST_P(KilledAnywhere, LeavesEveryFileAndUndoBringsAllBack)
{
    inWorld([](World& world) {
        Tally tally;
        std::size_t index = 0;
        while (survivesKillAt(index, world, tally))
            ++index;
        EXPECT_TRUE(testing::Test::HasFailure() || world.isDone());
        EXPECT_GE(tally.points(), 5U);
        printCounts(tally.text());
    });
}

INSTANTIATE_TEST_SUITE_P(Safety, KilledAnywhere, testing::ValuesIn(everyScenario()), scenarioName);

}  // namespace
}  // namespace tidemark
