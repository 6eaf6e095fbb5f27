#include "CommandRunner.h"

#include "ArgumentParser.h"
#include "Commands.h"
#include "FailureText.h"
#include "HelpText.h"
#include "OutputStream.h"
#include "StandardStreams.h"
#include "UsageError.h"

#include <unistd.h>

#include <string>

namespace tidemark {

namespace {

ExitStatus runCommand(const Invocation& invocation)
{
    switch (*invocation.command) {
    case Command::status:
        return runStatus(invocation);
    case Command::preview:
        return runPreview(invocation);
    case Command::sweep:
        return runSweep(invocation);
    case Command::undo:
        return runUndo(invocation);
    case Command::activity:
        return runActivity(invocation);
    case Command::pause:
        return runPause(invocation);
    case Command::resume:
        return runResume(invocation);
    case Command::listFolders:
        return runListFolders(invocation);
    case Command::addFolders:
        return runAddFolders(invocation);
    case Command::removeFolders:
        return runRemoveFolders(invocation);
    case Command::watch:
        return runWatch(invocation);
    }
    return exitFailed;
}

ExitStatus printText(const std::string& text)
{
    OutputStream output{STDOUT_FILENO};
    output.write(text);
    output.flush();
    return exitDone;
}

ExitStatus run(const Invocation& invocation)
{
    switch (invocation.mode) {
    case Invocation::Mode::help:
        return printText(helpText(invocation.command));
    case Invocation::Mode::version:
        return printText(versionText());
    case Invocation::Mode::run:
        break;
    }
    return runCommand(invocation);
}

}  // namespace

int runCommandLine(std::span<const char* const> arguments)
{
    StandardStreams::secure();
    try {
        return run(parseArguments(arguments));
    } catch (const UsageError& error) {
        StandardStreams::complain(std::string{error.what()} + " (try: tidemarkctl --help)");
        return exitWrongUsage;
    } catch (const std::exception& error) {
        StandardStreams::complain(failureText(error));
        return exitFailed;
    }
}

}  // namespace tidemark
