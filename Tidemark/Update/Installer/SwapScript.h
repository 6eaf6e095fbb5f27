#pragma once

#include "FileURL.h"

#include <string>

#include <sys/types.h>

namespace tidemark {

/// The shell script that puts the new bundle in the place of the old one when the application has ended.
///
/// It is called with the new bundle and the installed one, and lies beside the work folder, which has the same
/// name without ".sh".
namespace SwapScript {

/// Waits for the process `pid` to end; moves the installed bundle aside to "<bundle>.bak" and copies the new one
/// into place; if that fails, takes the half copy away and moves the old one back. Removes the work folder and
/// itself, and starts whichever bundle stands there then, in a session of its own.
std::string text(pid_t pid);

/// Writes the script to `script`, a file for the user alone, and starts it such that it outlives this process,
/// its session, and where systemd manages the user's programs, its unit, whose end would kill it. The restarted
/// application has this process's environment. Returns the process, which nobody has to wait for. Throws
/// filesystem_error and system_error.
///
/// `scopeTool` is systemd-run(1). It is tried out first: where it cannot reach a user manager, or is not there,
/// the script starts without it.
pid_t launch(const FileURL& script, const FileURL& newBundle, const FileURL& installedBundle,
    pid_t pid, const std::string& scopeTool = "systemd-run");

}  // namespace SwapScript

}  // namespace tidemark
