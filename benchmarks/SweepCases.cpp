#include "Cases.h"

#include "Clock.h"
#include "Lazy.h"
#include "MoveSample.h"
#include "Stopwatch.h"
#include "SweepController.h"
#include "Yardsticks.h"

#include <stdexcept>

namespace tidemark::bench {

namespace {

using Sample = Lazy<MoveSample>;

constexpr std::size_t moves = 1'000;
constexpr double bar = 1.3;

/// Everything, from the scan of the folder on.
Measured sweep(MoveSample& sample)
{
    sample.reset();
    const SystemClock clock;
    SweepController controller(SettingsStore(sample.settingsURL(), sample.fileManager(), clock),
        JournalStore(sample.journalURL(), sample.fileManager()), sample.fileManager());
    const Measured measured = Stopwatch::time([&] { controller.sweepNow(clock.now()); });
    sample.requireJournalAfter(moves);
    return measured;
}

Measured bareLoop(MoveSample& sample)
{
    sample.reset();
    const Measured measured = Stopwatch::time([&] {
        for (std::size_t index = 0; index < moves; ++index) {
            Yardsticks::replaceDurably(sample.journalURL(), sample.replay().after(index + 1));
            Yardsticks::rename(sample.source(index), sample.destination(index));
        }
    });
    sample.requireJournalAfter(moves);
    return measured;
}

}  // namespace

void addSweepCases(const Place& place, Suite& suite)
{
    const Sample sample(
        [=] { return std::make_unique<MoveSample>(place, "sweep", moves, Journal{}); });
    suite.add(Comparison({.work = "sweep of moves", .size = moves, .place = place.name},
        [=] { return sweep(sample.get()); },
        {{"durable writes, renames", [=] { return bareLoop(sample.get()); }, bar}}));
}

}  // namespace tidemark::bench
