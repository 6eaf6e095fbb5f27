#include "UndoReport.h"

#include "FailureText.h"
#include "Text.h"

namespace tidemark {

namespace {

/// Writes the report, and passes everything on.
class Collector final : public UndoObserver {
public:
    Collector(UndoReport& report, UndoObserver& next)
        : m_report(&report)
        , m_next(&next)
    {
    }

    void didRestore(const JournalEntry& entry, const FileURL& place) override
    {
        m_report->restored.push_back({entry, place.path()});
        m_next->didRestore(entry, place);
    }
    void didFindGone(const JournalEntry& entry) override
    {
        m_report->gone.push_back(entry);
        m_next->didFindGone(entry);
    }
    bool shouldStop() override { return m_next->shouldStop(); }

private:
    UndoReport* m_report;
    UndoObserver* m_next;
};

}  // namespace

void UndoReport::Restored::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("entry", entry);
        encoder.member("place", place);
    });
}

UndoReport::Restored UndoReport::Restored::decode(const JSONDecoder& decoder)
{
    return {.entry = JournalEntry::decode(decoder["entry"]), .place = decoder["place"].string()};
}

void UndoReport::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("didPause", didPause);
        encoder.member("failure", failure);
        encoder.member("gone", gone);
        encoder.member("record", record);
        encoder.member("restored", restored);
    });
}

UndoReport UndoReport::decode(const JSONDecoder& decoder)
{
    UndoReport report{
        .didPause = decoder["didPause"].boolean(),
        .restored = decoder["restored"].list<Restored>(),
        .gone = decoder["gone"].list<JournalEntry>(),
    };
    if (const auto record = decoder.find("record"))
        report.record = SweepRecord::decode(*record);
    if (const auto failure = decoder.find("failure"))
        report.failure = failure->string();
    return report;
}

bool hasSweepToUndo(Workspace& workspace)
{
    return workspace.controller().hasSweepToUndo();
}

bool pauseBeforeUndo(Workspace& workspace)
{
    if (workspace.controller().isPaused())
        return false;
    workspace.controller().setPaused(true);
    return true;
}

UndoReport takeBackLastSweep(Workspace& workspace, Date now, UndoObserver& observer)
{
    UndoReport report;
    Collector collector{report, observer};
    try {
        report.record = workspace.controller().undoLast(now, &collector);
    } catch (const std::exception& error) {
        report.failure = withValidUTF8(failureText(error));
    }
    return report;
}

UndoReport performUndo(Workspace& workspace, Date now)
{
    workspace.requireReadableSettings();
    if (!hasSweepToUndo(workspace))
        return {};
    const bool didPause = pauseBeforeUndo(workspace);
    UndoObserver nobody;
    UndoReport report = takeBackLastSweep(workspace, now, nobody);
    report.didPause = didPause;
    return report;
}

}  // namespace tidemark
