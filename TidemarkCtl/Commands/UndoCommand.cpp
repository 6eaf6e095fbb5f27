#include "Commands.h"
#include "FileTable.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "JournalText.h"
#include "StandardStreams.h"
#include "SupportFolder.h"
#include "TextPrinter.h"
#include "UndoReport.h"

namespace tidemark {

namespace {

FileRow rowFor(const UndoReport::Restored& restored, const PeopleText& people)
{
    const JournalEntry& entry = restored.entry;
    const bool isRenamed = restored.place != entry.from;
    return {.folder = people.path(FileURL{entry.from}.parent().path()),
        .lead = "Restored",
        .name = JournalText::name(entry.from),
        .detail = isRenamed
            ? "as " + JournalText::name(restored.place) + ", for its old name is taken"
            : "from "
                + (entry.op == JournalEntry::Op::trash ? "the Trash" : people.path(entry.to))};
}

FileRow rowFor(const JournalEntry& gone, const PeopleText& people)
{
    return {.folder = people.path(FileURL{gone.from}.parent().path()),
        .lead = "Gone",
        .name = JournalText::name(gone.from),
        .detail = "no longer at " + people.path(gone.to),
        .emphasis = Emphasis::bad};
}

std::string summaryOf(const UndoReport& report, const PeopleText& people)
{
    std::string text = PeopleText::count(report.restored.size(), "file") + " restored";
    if (!report.gone.empty())
        text += ", " + PeopleText::number(report.gone.size()) + " gone";
    if (!report.record)
        return text + " so far. Run undo again to go on where it stopped.";
    return "Undid the sweep of " + people.date(report.record->startedAt) + ": " + text + '.';
}

void printFiles(const UndoReport& report, TextPrinter& printer)
{
    const PeopleText& people = printer.people();
    const auto rowAt = [&](std::size_t index) {
        return index < report.restored.size()
            ? rowFor(report.restored[index], people)
            : rowFor(report.gone[index - report.restored.size()], people);
    };
    const std::size_t count = report.restored.size() + report.gone.size();
    printFileTable(count, rowAt, printer);
    if (count > 0)
        printer.printLine();
    printer.printLine(summaryOf(report, people), Emphasis::strong);
}

void print(const UndoReport& report)
{
    TextPrinter printer;
    if (!report.record && !report.failure) {
        printer.printLine("There is nothing to undo.");
    } else {
        printFiles(report, printer);
        printer.printLine(
            std::string{report.didPause ? "Sweeping is paused now, so that the files stay there. "
                                        : "Sweeping is paused. "}
            + std::string{hints::resume});
    }
    printer.flush();
}

void printAsJSON(const UndoReport& report)
{
    if (report.record)
        return printJSON(*report.record);
    OutputStream output{STDOUT_FILENO};
    output.write("null\n");
    output.flush();
}

}  // namespace

ExitStatus runUndo(const Invocation& invocation)
{
    const UndoReport report = operations(invocation)->undo(invocation.now);
    if (!invocation.json)
        print(report);
    else if (!report.failure)
        printAsJSON(report);

    if (!report.failure)
        return exitDone;
    StandardStreams::complain(*report.failure);
    return exitFailed;
}

}  // namespace tidemark
