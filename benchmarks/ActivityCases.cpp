#include "Cases.h"

#include "JournalFile.h"
#include "Lazy.h"
#include "Stopwatch.h"
#include "Yardsticks.h"

#include <benchmark/benchmark.h>

#include <array>

namespace tidemark::bench {

namespace {

using Sample = Lazy<JournalFile>;
using Question = void (*)(SweepController&);

constexpr std::array<std::size_t, 3> sizes{100, 10'000, 100'000};

void askCanUndo(SweepController& controller)
{
    benchmark::DoNotOptimize(controller.canUndo());
}

void askRecentActivity(SweepController& controller)
{
    constexpr int rowsInMenu = 20;
    benchmark::DoNotOptimize(controller.recentActivity(rowsInMenu));
}

/// The journal has not been read yet.
Measured firstTime(Question ask, JournalFile& file)
{
    const auto controller = file.makeController();
    return Stopwatch::time([&] { ask(*controller); });
}

Measured bareRead(const FileURL& journal)
{
    Yardsticks::ParsedFile parsed;
    return Stopwatch::time([&] { parsed = Yardsticks::readAndParse(journal); });
}

/// The journal has been read and has not changed since.
void askAgain(Question ask, JournalFile& file, benchmark::State& state)
{
    const auto controller = file.makeController();
    ask(*controller);
    for ([[maybe_unused]] auto _ : state)
        ask(*controller);
}

void addCasesFor(const std::string& name, Question ask, std::size_t size, const Sample& sample,
    const Place& place, Suite& suite)
{
    suite.add(Comparison({.work = name + ", first", .size = size, .place = place.name},
        [=] { return firstTime(ask, sample.get()); },
        {{"read, parse", [=] { return bareRead(sample.get().url()); }}}));
    benchmark::RegisterBenchmark((name + ", unchanged/" + std::to_string(size)).c_str(),
        [=](benchmark::State& state) { askAgain(ask, sample.get(), state); });
}

}  // namespace

void addActivityCases(const Place& place, Suite& suite)
{
    for (const std::size_t size : sizes) {
        const Sample sample([=] { return std::make_unique<JournalFile>(place, size); });
        addCasesFor("canUndo", askCanUndo, size, sample, place, suite);
        addCasesFor("recentActivity", askRecentActivity, size, sample, place, suite);
    }
}

}  // namespace tidemark::bench
