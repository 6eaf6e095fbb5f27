#include "Commands.h"
#include "FileTable.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "JournalText.h"
#include "StandardStreams.h"
#include "SupportFolder.h"
#include "TextPrinter.h"
#include "UndoReport.h"

#include <filesystem>
#include <set>
#include <string_view>
#include <vector>

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

/// The files that were not found where the sweep had put them. Refers to the report.
struct Missing {
    std::vector<const JournalEntry*> back;  ///< A file has their name where they came from.
    std::vector<const JournalEntry*> gone;
};

/// An undo that was killed has brought files back which its journal still names, and so may people have.
Missing missingFrom(const UndoReport& report)
{
    std::set<std::string_view> restored;
    for (const UndoReport::Restored& file : report.restored)
        restored.insert(file.place);
    Missing missing;
    for (const JournalEntry& entry : report.gone) {
        std::error_code unknown;
        const auto found = std::filesystem::symlink_status(entry.from, unknown);
        const bool seemsBack = std::filesystem::exists(found)
            && !std::filesystem::is_directory(found) && !restored.contains(entry.from);
        (seemsBack ? missing.back : missing.gone).push_back(&entry);
    }
    return missing;
}

FileRow rowForBack(const JournalEntry& back, const PeopleText& people)
{
    return {.folder = people.path(FileURL{back.from}.parent().path()),
        .lead = "Back",
        .name = JournalText::name(back.from),
        .detail = "no longer at " + people.path(back.to) + ", but a file of this name is here"};
}

FileRow rowForGone(const JournalEntry& gone, const PeopleText& people)
{
    return {.folder = people.path(FileURL{gone.from}.parent().path()),
        .lead = "Gone",
        .name = JournalText::name(gone.from),
        .detail = "no longer at " + people.path(gone.to),
        .emphasis = Emphasis::bad};
}

std::string summaryOf(const UndoReport& report, const Missing& missing, const PeopleText& people)
{
    std::string text = PeopleText::count(report.restored.size(), "file") + " restored";
    if (const std::size_t count = missing.back.size(); count > 0)
        text += ", " + PeopleText::number(count)
            + (count == 1 ? " seems to be back already" : " seem to be back already");
    if (!missing.gone.empty())
        text += ", " + PeopleText::number(missing.gone.size()) + " gone";
    if (!report.record)
        return text + " so far. Run undo again to go on where it stopped.";
    return "Undid the sweep of " + people.date(report.record->startedAt) + ": " + text + '.';
}

void printFiles(const UndoReport& report, TextPrinter& printer)
{
    const PeopleText& people = printer.people();
    const Missing missing = missingFrom(report);
    const auto rowAt = [&](std::size_t index) {
        if (index < report.restored.size())
            return rowFor(report.restored[index], people);
        index -= report.restored.size();
        return index < missing.back.size()
            ? rowForBack(*missing.back[index], people)
            : rowForGone(*missing.gone[index - missing.back.size()], people);
    };
    const std::size_t count = report.restored.size() + report.gone.size();
    printFileTable(count, rowAt, printer);
    if (count > 0)
        printer.printLine();
    printer.printLine(summaryOf(report, missing, people), Emphasis::strong);
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
