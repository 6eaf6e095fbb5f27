#include "Commands.h"
#include "Hints.h"
#include "JSONOutput.h"
#include "LocalWorkspace.h"
#include "PauseChange.h"
#include "ReplacedNotice.h"
#include "StatusReport.h"
#include "SupportFolder.h"
#include "TextPrinter.h"

namespace tidemark {

namespace {

std::string sentenceFor(bool isPaused, const PauseChange& change)
{
    if (isPaused)
        return (change.wasSoAlready ? "Sweeping was paused already. " : "Sweeping is paused. ")
            + std::string{hints::resume};
    return change.wasSoAlready ? "Sweeping was not paused." : "Sweeping goes on.";
}

void print(bool isPaused, const PauseChange& change)
{
    TextPrinter printer;
    printer.printLine(sentenceFor(isPaused, change));
    printer.flush();
}

ExitStatus setPaused(bool isPaused, const Invocation& invocation)
{
    const PauseChange change = operations(invocation)->setPaused(isPaused);
    tellOfReplaced(change.replaced);
    if (invocation.json) {
        LocalWorkspace workspace{supportFolder(invocation)};
        printJSON(readStatus(workspace));
    } else {
        print(isPaused, change);
    }
    return exitDone;
}

}  // namespace

ExitStatus runPause(const Invocation& invocation)
{
    return setPaused(true, invocation);
}

ExitStatus runResume(const Invocation& invocation)
{
    return setPaused(false, invocation);
}

}  // namespace tidemark
