#pragma once

#include "Suite.h"

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <vector>

namespace tidemark::bench {

/// What a benchmark without a yardstick took. A plain value.
struct AbsoluteResult {
    std::string name;
    double nanoseconds =
        0;  ///< The median, for each item where it counts items, else for each call.
    std::optional<double> bytesPerSecond;
};

/// Says on standard error what has just been measured, and keeps what the suite does not know.
class ProgressReporter final : public benchmark::BenchmarkReporter {
public:
    /// `suite` outlives the reporter.
    explicit ProgressReporter(const Suite& suite);

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    const std::vector<AbsoluteResult>& absoluteResults() const { return m_absoluteResults; }
    bool hasFailed() const { return m_hasFailed; }

private:
    const Suite& m_suite;
    std::vector<AbsoluteResult> m_absoluteResults;
    bool m_hasFailed = false;
};

}  // namespace tidemark::bench
