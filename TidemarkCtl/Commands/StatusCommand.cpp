#include "Commands.h"
#include "DisplayText.h"
#include "FileTable.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "LocalWorkspace.h"
#include "StandardStreams.h"
#include "StatusReport.h"
#include "SupportFolder.h"
#include "TextPrinter.h"

namespace tidemark {

namespace {

FileRow rowFor(const StatusReport::Folder& folder, const PeopleText& people)
{
    const std::string path = people.path(folder.path);
    if (folder.problem)
        return {.name = path,
            .detail = "cannot be read: " + displayText(*folder.problem),
            .emphasis = Emphasis::bad};
    return {.name = path, .detail = "can be read"};
}

void printFolders(const StatusReport& report, TextPrinter& printer)
{
    printFileTable(
        report.folders.size(),
        [&](std::size_t index) { return rowFor(report.folders[index], printer.people()); },
        printer);
}

void printUndo(const StatusReport& report, TextPrinter& printer)
{
    if (report.journalProblem)
        printer.printLine(
            "Undo is not possible: " + displayText(*report.journalProblem), Emphasis::bad);
    else if (report.canUndo)
        printer.printLine("The last sweep can be undone with: tidemarkctl undo");
    else
        printer.printLine("There is nothing to undo.");
}

void print(const StatusReport& report)
{
    TextPrinter printer;
    printer.printLine(report.statusText, Emphasis::strong);
    printFolders(report, printer);
    printer.printLine();
    if (report.settingsProblem)
        printer.printLine("The settings cannot be read; these are the defaults.", Emphasis::bad);
    else if (report.folders.empty())
        printer.printLine("Add a folder with: tidemarkctl folders add ~/Downloads");
    if (report.isPaused)
        printer.printLine(hints::resume);
    printUndo(report, printer);
    if (report.lastFailure)
        printer.printLine("The last sweep failed (" + printer.people().date(report.lastFailure->at)
                + "): " + displayText(report.lastFailure->reason),
            Emphasis::bad);
    printer.flush();
}

}  // namespace

ExitStatus runStatus(const Invocation& invocation)
{
    LocalWorkspace workspace{supportFolder(invocation)};
    const StatusReport report = readStatus(workspace);
    if (invocation.json)
        printJSON(report);
    else
        print(report);

    if (report.settingsProblem) {
        StandardStreams::complain(*report.settingsProblem);
        return exitFailed;
    }
    // The text has told it already; the document has no place for it.
    if (report.journalProblem && invocation.json)
        StandardStreams::complain(*report.journalProblem);
    return exitDone;
}

}  // namespace tidemark
