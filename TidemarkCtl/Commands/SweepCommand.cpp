#include "Commands.h"
#include "DisplayText.h"
#include "FileTable.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "JournalText.h"
#include "StandardStreams.h"
#include "SupportFolder.h"
#include "SweepProgress.h"
#include "SweepReport.h"
#include "TextPrinter.h"

namespace tidemark {

namespace {

std::string folderOf(const std::string& path, const PeopleText& people)
{
    return people.path(FileURL{path}.parent().path());
}

FileRow rowFor(const JournalEntry& entry, const PeopleText& people)
{
    return {.folder = folderOf(entry.from, people),
        .lead = std::string{JournalText::verb(entry.op)},
        .name = JournalText::name(entry.from),
        .detail = JournalText::destination(entry.op, entry.to, people)};
}

FileRow rowFor(const SweepReport::Failure& failure, const PeopleText& people)
{
    return {.folder = folderOf(failure.path, people),
        .lead = "Failed",
        .name = JournalText::name(failure.path),
        .detail = displayText(failure.reason),
        .emphasis = Emphasis::bad};
}

void printFiles(const SweepReport& report, TextPrinter& printer)
{
    const std::vector<JournalEntry>& done = report.record.entries;
    const auto rowAt = [&](std::size_t index) {
        return index < done.size() ? rowFor(done[index], printer.people())
                                   : rowFor(report.failures[index - done.size()], printer.people());
    };
    printFileTable(done.size() + report.failures.size(), rowAt, printer);
    printer.printLine();
    printer.print("Moved " + PeopleText::count(done.size(), "file") + '.', Emphasis::strong);
    printer.printLine(done.empty() ? "" : " Undo with: tidemarkctl undo");
}

void print(const SweepReport& report)
{
    TextPrinter printer;
    if (report.wasPaused)
        printer.printLine("Sweeping is paused; nothing was done. " + std::string{hints::resume});
    else if (!report.watchesFolders)
        printer.printLine(hints::addFolder);
    else if (report.record.entries.empty() && report.failures.empty())
        printer.printLine(hints::nothingToSweep);
    else
        printFiles(report, printer);
    printer.flush();
}

SweepReport swept(const Invocation& invocation)
{
    const std::unique_ptr<Operations> sweeping = operations(invocation);
    SweepProgress progress;
    return sweeping->sweep(invocation.now, progress);
}

}  // namespace

ExitStatus runSweep(const Invocation& invocation)
{
    const SweepReport report = swept(invocation);
    if (invocation.json)
        printJSON(report.record);
    else
        print(report);

    const auto summary = report.summaryOfFailures();
    if (summary)
        StandardStreams::complain(*summary);
    else if (report.wasStopped)
        StandardStreams::complain("the sweep was stopped before it was done");
    return summary || report.wasStopped ? exitFailed : exitDone;
}

}  // namespace tidemark
