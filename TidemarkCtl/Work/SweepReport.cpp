#include "SweepReport.h"

#include "FailureText.h"

namespace tidemark {

namespace {

/// Collects what fails, and passes everything on.
class FailureCollector final : public SweepObserver {
public:
    explicit FailureCollector(SweepObserver& next)
        : m_next(&next)
    {
    }

    std::vector<SweepReport::Failure> takeFailures() { return std::move(m_failures); }

    void willScan(const FileURL& folder) override { m_next->willScan(folder); }
    void willPerform(std::size_t index, std::size_t count) override
    {
        m_next->willPerform(index, count);
    }
    void didPerform(const JournalEntry& entry) override { m_next->didPerform(entry); }
    void didFail(const PlannedAction& action, const std::exception& error) override
    {
        m_failures.push_back({action.source.path(), failureText(error)});
        m_next->didFail(action, error);
    }

private:
    SweepObserver* m_next;
    std::vector<SweepReport::Failure> m_failures;
};

SweepReport sweepWithoutMemory(Workspace& workspace, Date now, SweepObserver& observer)
{
    FailureCollector collector{observer};
    SweepReport report{.watchesFolders = !workspace.controller().settings().folders.empty(),
        .record = workspace.controller().sweepNow(now, &collector)};
    report.failures = collector.takeFailures();
    return report;
}

SweepFailure failureAt(Date now, std::string reason)
{
    return {.at = now, .reason = std::move(reason)};
}

}  // namespace

std::optional<std::string> SweepReport::summaryOfFailures() const
{
    if (failures.empty())
        return std::nullopt;
    const std::size_t attempted = record.entries.size() + failures.size();
    const Failure& first = failures.front();
    std::string text = std::to_string(failures.size()) + " of " + std::to_string(attempted)
        + (attempted == 1 ? " file" : " files") + " could not be moved, first: ";
    if (first.reason.find(first.path) == std::string::npos)
        text += first.path + ": ";
    return text + first.reason;
}

SweepReport performSweep(Workspace& workspace, Date now, SweepObserver& observer)
{
    workspace.requireReadableSettings();
    if (workspace.controller().isPaused())
        return {.wasPaused = true, .record = workspace.controller().sweepNow(now)};
    try {
        SweepReport report = sweepWithoutMemory(workspace, now, observer);
        std::optional<SweepFailure> failure;
        if (auto summary = report.summaryOfFailures())
            failure = failureAt(now, std::move(*summary));
        workspace.failures().save(failure);
        return report;
    } catch (const std::runtime_error& error) {
        workspace.failures().save(failureAt(now, failureText(error)));
        throw;
    }
}

}  // namespace tidemark
