#include "Suite.h"

#include "Interruption.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace tidemark::bench {

static void run(Comparison& comparison, benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        if (Interruption::hasCome()) {
            state.SkipWithError("interrupted");
            break;
        }
        try {
            state.SetIterationTime(comparison.measureInTurn().wall.count());
        } catch (const std::exception& error) {
            state.SkipWithError(error.what());
            break;
        }
    }
}

const Comparison& Suite::add(Comparison comparison)
{
    Comparison& kept =
        *m_comparisons.emplace_back(std::make_unique<Comparison>(std::move(comparison)));
    benchmark::RegisterBenchmark(
        kept.name().c_str(), [&kept](benchmark::State& state) { run(kept, state); })
        ->Iterations(1)
        ->UseManualTime();
    return kept;
}

void Suite::expectGrowth(const Comparison& small, const Comparison& large, double bar)
{
    m_growths.push_back({&small, &large, bar});
}

bool Suite::isComparison(const std::string& name) const
{
    return std::ranges::any_of(
        m_comparisons, [&](const auto& comparison) { return comparison->name() == name; });
}

}  // namespace tidemark::bench
