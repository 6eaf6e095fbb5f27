#pragma once

#include "CommandRunner.h"
#include "Invocation.h"

namespace tidemark {

// One function per command: it does the work, prints the result and returns the exit status. What keeps a
// command from its work is thrown, for the caller to tell.

ExitStatus runStatus(const Invocation& invocation);
ExitStatus runPreview(const Invocation& invocation);
ExitStatus runSweep(const Invocation& invocation);
ExitStatus runUndo(const Invocation& invocation);
ExitStatus runActivity(const Invocation& invocation);
ExitStatus runPause(const Invocation& invocation);
ExitStatus runResume(const Invocation& invocation);
ExitStatus runListFolders(const Invocation& invocation);
ExitStatus runAddFolders(const Invocation& invocation);
ExitStatus runRemoveFolders(const Invocation& invocation);
ExitStatus runWatch(const Invocation& invocation);

}  // namespace tidemark
