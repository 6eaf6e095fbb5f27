#include "WatchPrinter.h"

#include "DisplayText.h"
#include "FileTable.h"
#include "Hints.h"
#include "JournalText.h"
#include "StandardStreams.h"
#include "SystemCall.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace tidemark {

namespace {

bool isReaderGone()
{
    struct pollfd output {
        STDOUT_FILENO, 0, 0
    };
    return ::poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

std::vector<std::string> pathsOf(const Settings& settings)
{
    std::vector<std::string> paths;
    for (const WatchedFolder& folder : settings.folders)
        paths.push_back(folder.path);
    return paths;
}

FileRow rowFor(const WatchedFolderInfo& info, const PeopleText& people)
{
    return {.name = people.path(info.folder.path),
        .detail = info.isGranted ? "" : "cannot be read now",
        .emphasis = info.isGranted ? Emphasis::none : Emphasis::bad};
}

std::string graceText(Seconds gracePeriod)
{
    const auto seconds = static_cast<std::size_t>(std::clamp(gracePeriod.count(), 0.0, 1e15));
    return "Files are left alone until they have rested for " + PeopleText::count(seconds, "second")
        + ". Stop with Ctrl-C.";
}

}  // namespace

WatchPrinter::WatchPrinter(AppModel& model, std::function<void()> onReaderGone)
    : m_model(model)
    , m_onReaderGone(std::move(onReaderGone))
    , m_output(STDOUT_FILENO, [this](int error) { outputFailed(error); })
    , m_statusText(model.statusText())
    , m_folders(pathsOf(model.settings()))
{
    QObject::connect(&model, &AppModel::performed, &m_context,
        [this](const JournalEntry& entry) { printEntry(entry); });
    QObject::connect(&model, &AppModel::restored, &m_context,
        [this](const JournalEntry& entry, const FileURL& place) { printRestored(entry, place); });
    QObject::connect(&model, &AppModel::swept, &m_context,
        [this](const SweepOutcome& outcome) { printOutcome(outcome); });
    QObject::connect(&model, &AppModel::undone, &m_context,
        [this](const UndoOutcome& outcome) { printUndo(outcome); });
    QObject::connect(
        &model, &AppModel::settingsChanged, &m_context, [this] { printStatusChange(); });
    QObject::connect(&model, &AppModel::warned, &m_context, [this](const std::string& line) {
        printEvent(m_model.now(), "Warning", displayText(line), Emphasis::bad);
    });
}

void WatchPrinter::printStart(bool isFirstStart)
{
    if (isFirstStart)
        m_printer.printLine("No folder was configured, so these are watched by the default rules. "
                            "See them with: tidemarkctl folders");
    m_printer.printLine(m_statusText, Emphasis::strong);
    printFolders();
    if (m_model.watchProblem())
        m_printer.printLine(
            "Changes are not noticed now: " + displayText(*m_model.watchProblem()), Emphasis::bad);
    if (m_model.settings().isPaused)
        m_printer.printLine(hints::resume);
    m_printer.printLine(m_folders.empty() ? std::string{hints::addFolder}
                                          : graceText(m_model.settings().gracePeriod));
    flush();
}

void WatchPrinter::printFolders()
{
    const std::vector<WatchedFolderInfo>& folders = m_model.watchedFolders();
    printFileTable(
        folders.size(),
        [&](std::size_t index) { return rowFor(folders[index], m_printer.people()); }, m_printer);
}

void WatchPrinter::printEnd()
{
    constexpr std::chrono::milliseconds patience{1000};
    printEvent(m_model.now(), "Stopped", "");
    m_output.finish(patience);
}

void WatchPrinter::printEntry(const JournalEntry& entry)
{
    printEvent(m_model.now(), JournalText::verb(entry.op),
        JournalText::name(entry.from) + ' '
            + JournalText::destination(entry.op, entry.to, m_printer.people()));
}

void WatchPrinter::printRestored(const JournalEntry& entry, const FileURL& place)
{
    printEvent(m_model.now(), "Restored",
        JournalText::name(entry.from) + " -> " + m_printer.people().path(place.path()));
}

void WatchPrinter::printOutcome(const SweepOutcome& outcome)
{
    if (!outcome.report) {
        if (outcome.failure && outcome.failure != m_toldFailure)
            printEvent(m_model.now(), "Failed", displayText(*outcome.failure), Emphasis::bad);
        m_toldFailure = outcome.failure;
        return;
    }
    m_toldFailure.reset();
    for (const SweepReport::Failure& failure : outcome.report->failures) {
        if (std::ranges::find(m_toldFailures, failure) == m_toldFailures.end())
            printEvent(m_model.now(), "Failed",
                m_printer.people().path(failure.path) + ": " + displayText(failure.reason),
                Emphasis::bad);
    }
    m_toldFailures = outcome.report->failures;
}

void WatchPrinter::printUndo(const UndoOutcome& outcome)
{
    const auto& failure = outcome.report ? outcome.report->failure : outcome.failure;
    if (failure)
        printEvent(m_model.now(), "Failed", "undo: " + displayText(*failure), Emphasis::bad);
}

void WatchPrinter::printStatusChange()
{
    const std::string statusText = m_model.statusText();
    std::vector<std::string> folders = pathsOf(m_model.settings());
    const bool isNew = statusText != m_statusText || folders != m_folders;
    m_statusText = statusText;
    m_folders = std::move(folders);
    if (isNew)
        printEvent(m_model.now(), m_statusText, "");
}

void WatchPrinter::printEvent(
    Date at, std::string_view verb, const std::string& text, Emphasis emphasis)
{
    constexpr std::size_t longestVerb = 8;
    m_printer.print(m_printer.people().dateWithSeconds(at) + "  ", Emphasis::faint);
    if (text.empty()) {
        m_printer.printLine(verb, emphasis);
    } else {
        m_printer.printPadded(verb, longestVerb + 2, emphasis);
        m_printer.printLine(text);
    }
    flush();
}

void WatchPrinter::flush()
{
    m_output.write(m_printer.take());
}

void WatchPrinter::outputFailed(int error)
{
    StandardStreams::complain("cannot write to standard output: " + systemError(error).message());
    if (isReaderGone())
        m_onReaderGone();
}

}  // namespace tidemark
