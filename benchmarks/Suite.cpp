#include "Suite.h"

#include "Interruption.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace tidemark::bench {

namespace {

/// Measures once more and returns the time that Google Benchmark is to show.
using Turn = std::function<Seconds()>;

void run(const Turn& turn, benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        if (Interruption::hasCome()) {
            state.SkipWithError("interrupted");
            break;
        }
        try {
            state.SetIterationTime(turn().count());
        } catch (const std::exception& error) {
            state.SkipWithError(error.what());
            break;
        }
    }
}

benchmark::internal::Benchmark* registerTurns(const std::string& name, Turn turn)
{
    return benchmark::RegisterBenchmark(
        name.c_str(), [turn = std::move(turn)](benchmark::State& state) { run(turn, state); })
        ->Iterations(1)
        ->UseManualTime();
}

template <typename Case>
bool isAmong(const std::vector<std::unique_ptr<Case>>& cases, const std::string& name)
{
    return std::ranges::any_of(cases, [&](const auto& each) { return each->name() == name; });
}

}  // namespace

const Comparison& Suite::add(Comparison comparison)
{
    Comparison& kept =
        *m_comparisons.emplace_back(std::make_unique<Comparison>(std::move(comparison)));
    registerTurns(kept.name(), [&kept] { return kept.measureInTurn().wall; });
    return kept;
}

void Suite::add(Responsiveness responsiveness)
{
    Responsiveness& kept =
        *m_responsiveness.emplace_back(std::make_unique<Responsiveness>(std::move(responsiveness)));
    auto* const registered = registerTurns(kept.name(), [&kept] { return kept.measureInTurn(); });
    if (kept.subject().isOnce)
        registered->Repetitions(1);
}

void Suite::add(IdleCase idleCase)
{
    IdleCase& kept = *m_idleCases.emplace_back(std::make_unique<IdleCase>(std::move(idleCase)));
    registerTurns(kept.name(), [&kept] { return kept.measure(); })->Repetitions(1);
}

void Suite::expectGrowth(const Comparison& small, const Comparison& large, double bar)
{
    m_growths.push_back({&small, &large, bar});
}

bool Suite::holds(const std::string& name) const
{
    return isAmong(m_comparisons, name) || isAmong(m_responsiveness, name)
        || isAmong(m_idleCases, name);
}

}  // namespace tidemark::bench
