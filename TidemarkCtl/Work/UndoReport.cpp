#include "UndoReport.h"

#include "FailureText.h"

namespace tidemark {

namespace {

class Collector final : public UndoObserver {
public:
    explicit Collector(UndoReport& report)
        : m_report(&report)
    {
    }

    void didRestore(const JournalEntry& entry, const FileURL& place) override
    {
        m_report->restored.push_back({entry, place.path()});
    }
    void didFindGone(const JournalEntry& entry) override { m_report->gone.push_back(entry); }

private:
    UndoReport* m_report;
};

}  // namespace

UndoReport performUndo(Workspace& workspace, Date now)
{
    workspace.requireReadableSettings();
    SweepController& controller = workspace.controller();
    controller.recentActivity(0);  // throws for a journal that cannot be read
    UndoReport report;
    if (!controller.canUndo())
        return report;

    if (!controller.isPaused()) {
        controller.setPaused(true);
        report.didPause = true;
    }
    Collector collector{report};
    try {
        report.record = controller.undoLast(now, &collector);
    } catch (const std::runtime_error& error) {
        report.failure = failureText(error);
    }
    return report;
}

}  // namespace tidemark
