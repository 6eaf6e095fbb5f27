#include "Cases.h"

#include "Clock.h"
#include "Lazy.h"
#include "MoveSample.h"
#include "SampleJournal.h"
#include "Stopwatch.h"
#include "Yardsticks.h"

#include <array>
#include <stdexcept>

namespace tidemark::bench {

namespace {

using Sample = Lazy<MoveSample>;

constexpr std::array<std::size_t, 3> sizes{100, 10'000, 100'000};
constexpr std::size_t largest = sizes.back();
constexpr std::size_t laterActions = 10;
constexpr double barOfFirstAction = 1.5;
constexpr double barOfLaterActions = 1.2;

/// Takes the time at which each action of a sweep is done.
class ActionTimes final : public SweepObserver {
public:
    explicit ActionTimes(std::size_t actions) { m_times.reserve(actions); }

    void didPerform(const JournalEntry& /*entry*/) override
    {
        m_times.push_back(m_stopwatch.elapsed());
    }

    std::size_t count() const { return m_times.size(); }

    /// What each action but the first took, on average.
    Measured later() const
    {
        const auto actions = static_cast<double>(m_times.size() - 1);
        return {.wall = (m_times.back().wall - m_times.front().wall) / actions,
            .cpu = (m_times.back().cpu - m_times.front().cpu) / actions};
    }

private:
    Stopwatch m_stopwatch;
    std::vector<Measured> m_times;
};

void apply(MoveSample& sample, std::size_t actions, SweepObserver* observer)
{
    const Date now = SystemClock().now();
    Executor executor(
        JournalStore(sample.journalURL(), sample.fileManager()), sample.fileManager());
    executor.apply(sample.plan(actions), now, now, observer);
}

Measured firstAction(MoveSample& sample)
{
    sample.reset();
    const Measured measured = Stopwatch::time([&] { apply(sample, 1, nullptr); });
    sample.requireJournalAfter(1);
    return measured;
}

Measured bareFirstAction(MoveSample& sample)
{
    sample.reset();
    return Stopwatch::time([&] {
        static_cast<void>(Yardsticks::readAndParse(sample.journalURL()));
        Yardsticks::replaceDurably(sample.journalURL(), sample.replay().after(1));
    });
}

Measured eachLaterAction(MoveSample& sample)
{
    sample.reset();
    ActionTimes times(laterActions + 1);
    apply(sample, laterActions + 1, &times);
    if (times.count() != laterActions + 1)
        throw std::runtime_error("an action failed");
    sample.requireJournalAfter(laterActions + 1);
    return times.later();
}

Measured eachBareLaterAction(MoveSample& sample)
{
    sample.reset();
    Yardsticks::replaceDurably(sample.journalURL(), sample.replay().after(1));
    const Measured all = Stopwatch::time([&] {
        for (std::size_t count = 2; count <= laterActions + 1; ++count)
            Yardsticks::replaceDurably(sample.journalURL(), sample.replay().after(count));
    });
    return {.wall = all.wall / laterActions, .cpu = all.cpu / laterActions};
}

void addCasesFor(std::size_t size, const Place& place, Suite& suite)
{
    const Sample sample([=] {
        return std::make_unique<MoveSample>(place, "journal of " + std::to_string(size),
            laterActions + 1, SampleJournal::make(size));
    });
    const auto barIfLargest = [&](double bar) {
        return size == largest ? std::optional(bar) : std::nullopt;
    };
    suite.add(Comparison({.work = "first action on a journal", .size = size, .place = place.name},
        [=] { return firstAction(sample.get()); },
        {{"read, parse, durable write", [=] { return bareFirstAction(sample.get()); },
            barIfLargest(barOfFirstAction)}}));
    suite.add(Comparison({.work = "each later action", .size = size, .place = place.name},
        [=] { return eachLaterAction(sample.get()); },
        {{"durable write", [=] { return eachBareLaterAction(sample.get()); },
            barIfLargest(barOfLaterActions)}}));
}

}  // namespace

void addJournalCases(const Place& place, Suite& suite)
{
    for (const std::size_t size : sizes)
        addCasesFor(size, place, suite);
}

}  // namespace tidemark::bench
