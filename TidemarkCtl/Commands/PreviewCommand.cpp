#include "Commands.h"
#include "DisplayText.h"
#include "FailureText.h"
#include "FileTable.h"
#include "Hints.h"
#include "JSONEncoder.h"
#include "LocalWorkspace.h"
#include "OutputStream.h"
#include "PreviewReport.h"
#include "SupportFolder.h"
#include "SweepProgress.h"
#include "TextPrinter.h"

#include <unistd.h>

namespace tidemark {

namespace {

std::string detailOf(const RehearsedAction& action, const PeopleText& people)
{
    if (action.obstacle)
        return "cannot be moved: " + displayText(failureText(action.obstacle));
    if (!action.destination)
        return "-> Trash";
    return "-> " + people.path(action.destination->path());
}

FileRow columnsFor(const PlannedAction& planned)
{
    return {.lead = displayText(planned.ruleName),
        .name = displayText(planned.source.lastPathComponent())};
}

FileRow rowFor(const RehearsedAction& action, const PeopleText& people)
{
    FileRow row = columnsFor(action.planned);
    row.folder = people.path(action.planned.source.parent().path());
    row.detail = detailOf(action, people);
    row.emphasis = action.obstacle ? Emphasis::bad : Emphasis::none;
    return row;
}

std::string summaryOf(std::size_t count, std::size_t obstacles)
{
    std::string text = PeopleText::count(count - obstacles, "file") + " would be moved";
    if (obstacles > 0)
        text += ", " + PeopleText::number(obstacles) + " could not be";
    return text + '.';
}

void printActions(const PreviewReport& report, TextPrinter& printer)
{
    printFileTable(
        report.rehearsal.size(),
        [&](std::size_t index) { return columnsFor(report.rehearsal.planned(index)); },
        [&](std::size_t index) { return rowFor(report.rehearsal[index], printer.people()); },
        printer);
    printer.printLine();
    const std::size_t count = report.rehearsal.size();
    const std::size_t obstacles = report.rehearsal.obstacles();
    const bool isWorthIt = !report.isPaused && obstacles < count;
    printer.print(summaryOf(count, obstacles), Emphasis::strong);
    printer.printLine(isWorthIt ? " Do it with: tidemarkctl sweep" : "");
}

void print(const PreviewReport& report)
{
    TextPrinter printer;
    if (report.isPaused) {
        printer.printLine("Sweeping is paused; this is what would happen otherwise. "
            + std::string{hints::resume});
        printer.printLine();
    }
    if (report.rehearsal.size() > 0)
        printActions(report, printer);
    else
        printer.printLine(report.watchesFolders ? hints::nothingToSweep : hints::addFolder);
    printer.flush();
}

/// Passes the text on in pieces: as a whole it would take more memory than everything else.
void printAsJSON(const PreviewReport& report)
{
    constexpr std::size_t pieceSize = std::size_t{64} << 10U;
    OutputStream output{STDOUT_FILENO};
    JSONEncoder encoder;
    report.encode(encoder, [&] {
        if (encoder.text().size() >= pieceSize)
            output.write(encoder.takeText());
    });
    output.write(encoder.takeText());
    output.write("\n");
    output.flush();
}

PreviewReport previewed(const Invocation& invocation)
{
    LocalWorkspace workspace{supportFolder(invocation)};
    SweepProgress progress;
    return previewSweep(workspace, invocation.now.value_or(workspace.now()), progress);
}

}  // namespace

ExitStatus runPreview(const Invocation& invocation)
{
    const PreviewReport report = previewed(invocation);
    if (invocation.json)
        printAsJSON(report);
    else
        print(report);
    return exitDone;
}

}  // namespace tidemark
