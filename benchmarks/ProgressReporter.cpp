#include "ProgressReporter.h"

#include <algorithm>
#include <iostream>

namespace tidemark::bench {

namespace {

using Run = benchmark::BenchmarkReporter::Run;

double counterOr(const Run& run, const char* name, double otherwise)
{
    const auto found = run.counters.find(name);
    return found == run.counters.end() ? otherwise : found->second.value;
}

double nanosecondsFor(const Run& run)
{
    const double perCall = run.real_accumulated_time / static_cast<double>(run.iterations) * 1e9;
    const double itemsPerSecond = counterOr(run, "items_per_second", 0);
    return itemsPerSecond > 0 ? 1e9 / itemsPerSecond : perCall;
}

/// `runs` are the repetitions of one benchmark; there is at least one.
AbsoluteResult resultOf(std::vector<Run> runs)
{
    const auto middle = runs.begin() + static_cast<std::ptrdiff_t>(runs.size() / 2);
    std::ranges::nth_element(runs, middle, {}, nanosecondsFor);
    const double bytes = counterOr(*middle, "bytes_per_second", 0);
    return {.name = middle->run_name.function_name,
        .nanoseconds = nanosecondsFor(*middle),
        .bytesPerSecond = bytes > 0 ? std::optional(bytes) : std::nullopt};
}

}  // namespace

ProgressReporter::ProgressReporter(const Suite& suite)
    : m_suite(suite)
{
}

bool ProgressReporter::ReportContext(const Context& /*context*/)
{
    return true;
}

void ProgressReporter::ReportRuns(const std::vector<Run>& runs)
{
    std::vector<Run> repetitions;
    for (const Run& run : runs) {
        if (!run.error_occurred && run.run_type == Run::RT_Iteration)
            repetitions.push_back(run);
    }
    const auto failed = std::ranges::find_if(runs, &Run::error_occurred);
    if (failed != runs.end()) {
        m_hasFailed = true;
        std::cerr << failed->run_name.function_name << ": " << failed->error_message << '\n';
    }
    if (repetitions.empty())
        return;
    const std::string name = repetitions.front().run_name.function_name;
    std::cerr << "measured " << name << ", " << repetitions.size() << " times\n";
    if (!m_suite.holds(name))
        m_absoluteResults.push_back(resultOf(std::move(repetitions)));
}

}  // namespace tidemark::bench
