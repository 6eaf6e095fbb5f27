#include "Commands.h"
#include "DisplayText.h"
#include "FileTable.h"
#include "FolderChanges.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "LocalWorkspace.h"
#include "ReplacedNotice.h"
#include "RuleText.h"
#include "SupportFolder.h"
#include "TextPrinter.h"

namespace tidemark {

namespace {

FileRow rowFor(const Rule& rule, const PeopleText& people)
{
    return {.name = displayText(rule.name) + (rule.isEnabled ? "" : " (off)"),
        .detail = ruleDestination(rule.action, people)};
}

/// `folder` with all the rules that a sweep follows in it.
void printFolder(const WatchedFolder& folder, TextPrinter& printer)
{
    printer.printLine(printer.people().path(folder.path), Emphasis::strong);
    printFileTable(
        folder.rules.size(),
        [&](std::size_t index) { return rowFor(folder.rules[index], printer.people()); }, printer);
}

void print(const Settings& settings)
{
    TextPrinter printer;
    for (const WatchedFolder& folder : SweepController::effectiveFolders(settings))
        printFolder(folder, printer);
    if (settings.folders.empty())
        printer.printLine(hints::addFolder);
    printer.flush();
}

void printPaths(std::string_view what, const std::vector<std::string>& paths, TextPrinter& printer)
{
    for (const std::string& path : paths)
        printer.printLine(std::string{what} + ' ' + printer.people().path(path));
}

void printAdded(const FolderChanges& changes)
{
    TextPrinter printer;
    printPaths("Watching", changes.changed, printer);
    printPaths("Already watching", changes.alreadyWatched, printer);
    if (!changes.changed.empty())
        printer.printLine(hints::preview);
    printer.flush();
}

void printRemoved(const FolderChanges& changes)
{
    TextPrinter printer;
    printPaths("No longer watching", changes.changed, printer);
    printer.flush();
}

using Change = FolderChanges (Operations::*)(const std::vector<GivenPath>&);

FolderChanges performed(Change change, const Invocation& invocation)
{
    std::vector<GivenPath> paths;
    for (const std::string& path : invocation.paths)
        paths.push_back(GivenPath::of(path));
    return ((*operations(invocation)).*change)(paths);
}

ExitStatus runChange(
    Change change, void (*print)(const FolderChanges&), const Invocation& invocation)
{
    const FolderChanges changes = performed(change, invocation);
    tellOfReplaced(changes.replaced);
    if (invocation.json)
        printJSON(changes.folders);
    else
        print(changes);
    return exitDone;
}

}  // namespace

ExitStatus runListFolders(const Invocation& invocation)
{
    LocalWorkspace workspace{supportFolder(invocation)};
    const Settings& settings = workspace.controller().settings();
    if (invocation.json)
        printJSON(settings.folders);
    else if (!workspace.settingsProblem())
        print(settings);
    workspace.requireReadableSettings();
    return exitDone;
}

ExitStatus runAddFolders(const Invocation& invocation)
{
    return runChange(&Operations::addFolders, printAdded, invocation);
}

ExitStatus runRemoveFolders(const Invocation& invocation)
{
    return runChange(&Operations::removeFolders, printRemoved, invocation);
}

}  // namespace tidemark
