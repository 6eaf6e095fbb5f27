#pragma once

#include "FileURL.h"

#include <string>

#include <sys/types.h>

namespace tidemark {

class WakeUp;

/// The shell script that puts the new bundle in the place of the old one when the application has ended.
///
/// It is called with the new bundle and the installed one, and lies beside the work folder, which has the same
/// name without ".sh".
namespace SwapScript {

/// Waits for the process `pid` to end; copies the new bundle beside the installed one, "<bundle>.new",
/// moves the installed one aside to "<bundle>.bak" and the copy into place; if any of that fails, moves
/// the old one back. Does nothing to a bundle that is no longer the one that was to be replaced. Removes
/// the work folder and itself, and starts whichever bundle stands there then, in a session of its own and
/// with no signal ignored.
std::string text(pid_t pid);

/// Writes the script to `script`, a file for the user alone beside the work folder, and starts it such
/// that it outlives this process, its session, and where systemd manages the user's programs, its unit,
/// whose end would kill it. The restarted application has this process's environment. Returns the
/// process, which nobody has to wait for, once it executes the script. Throws filesystem_error and
/// system_error, and runtime_error when `stop` was signalled before that; there is no script then.
///
/// `scopeTool` is systemd-run(1). It is tried out first: where it cannot reach a user manager, or is not
/// there, the script starts without it.
pid_t launch(const FileURL& script, const FileURL& newBundle, const FileURL& installedBundle,
    pid_t pid, const WakeUp& stop, const std::string& scopeTool = "systemd-run");

}  // namespace SwapScript

}  // namespace tidemark
