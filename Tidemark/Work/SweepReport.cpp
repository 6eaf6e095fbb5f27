#include "SweepReport.h"

#include "FailureText.h"
#include "FolderChanges.h"
#include "Text.h"

#include <filesystem>

namespace tidemark {

namespace {

/// Collects what fails, and passes everything on.
class FailureCollector final : public SweepObserver {
public:
    FailureCollector(SweepObserver& next, const FileURL& journal)
        : m_next(&next)
        , m_journal(&journal)
    {
    }

    std::vector<SweepReport::Failure> takeFailures() { return std::move(m_failures); }
    bool sawUnsavedJournal() const { return m_sawUnsavedJournal; }
    bool wasStopped() const { return m_wasStopped; }

    void willScan(const FileURL& folder) override { m_next->willScan(folder); }
    void willComeOfAge(Date earliest) override { m_next->willComeOfAge(earliest); }
    void willPerform(std::size_t index, std::size_t count) override
    {
        m_next->willPerform(index, count);
    }
    void didPerform(const JournalEntry& entry) override { m_next->didPerform(entry); }
    void didFail(const PlannedAction& action, const std::exception& error) override
    {
        m_failures.push_back({action.source.path(), withValidUTF8(failureText(error))});
        m_sawUnsavedJournal = m_sawUnsavedJournal || isAboutJournal(error);
        m_next->didFail(action, error);
    }
    bool shouldStop() override
    {
        m_wasStopped = m_wasStopped || m_next->shouldStop();
        return m_wasStopped;
    }

private:
    bool isAboutJournal(const std::exception& error) const
    {
        const auto* failure = dynamic_cast<const std::filesystem::filesystem_error*>(&error);
        return failure != nullptr && failure->path1() == m_journal->path();
    }

    SweepObserver* m_next;
    const FileURL* m_journal;
    std::vector<SweepReport::Failure> m_failures;
    bool m_sawUnsavedJournal = false;
    bool m_wasStopped = false;
};

SweepReport sweepWithoutMemory(
    Workspace& workspace, const Settings& settings, Date now, SweepObserver& observer)
{
    requireNoSupportFolder(settings, workspace);
    FailureCollector collector{observer, workspace.journalURL()};
    SweepReport report{.watchesFolders = !settings.folders.empty(),
        .record = workspace.controller().sweep(settings, now, &collector)};
    report.failures = collector.takeFailures();
    report.wasStopped = collector.wasStopped();
    report.couldSaveJournal = !collector.sawUnsavedJournal();
    return report;
}

SweepFailure failureAt(Date now, std::string reason)
{
    return {.at = now, .reason = std::move(reason)};
}

}  // namespace

void SweepReport::Failure::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("path", path);
        encoder.member("reason", reason);
    });
}

SweepReport::Failure SweepReport::Failure::decode(const JSONDecoder& decoder)
{
    return {.path = decoder["path"].string(), .reason = decoder["reason"].string()};
}

void SweepReport::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("couldSaveJournal", couldSaveJournal);
        encoder.member("failures", failures);
        encoder.member("record", record);
        encoder.member("wasPaused", wasPaused);
        encoder.member("wasStopped", wasStopped);
        encoder.member("watchesFolders", watchesFolders);
    });
}

SweepReport SweepReport::decode(const JSONDecoder& decoder)
{
    return {
        .wasPaused = decoder["wasPaused"].boolean(),
        .watchesFolders = decoder["watchesFolders"].boolean(),
        .wasStopped = decoder["wasStopped"].boolean(),
        .couldSaveJournal = decoder["couldSaveJournal"].boolean(),
        .record = SweepRecord::decode(decoder["record"]),
        .failures = decoder["failures"].list<Failure>(),
    };
}

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

SweepReport performSweep(
    Workspace& workspace, const Settings& settings, Date now, SweepObserver& observer)
{
    if (settings.isPaused)
        return {.wasPaused = true, .record = workspace.controller().sweep(settings, now)};
    try {
        SweepReport report = sweepWithoutMemory(workspace, settings, now, observer);
        std::optional<SweepFailure> failure;
        if (auto summary = report.summaryOfFailures())
            failure = failureAt(now, std::move(*summary));
        // A sweep that did not come to its end does not tell that all is well again.
        if (failure || !report.wasStopped)
            workspace.failures().save(failure);
        return report;
    } catch (const std::exception& error) {
        workspace.failures().save(failureAt(now, withValidUTF8(failureText(error))));
        throw;
    }
}

}  // namespace tidemark
