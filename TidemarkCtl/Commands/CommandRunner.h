#pragma once

#include <span>

namespace tidemark {

/// What the process tells its caller.
enum ExitStatus { exitDone = 0, exitFailed = 1, exitWrongUsage = 2 };

/// Does what the arguments (without the program's own name) ask for. Results are on standard output; a
/// failure is one line on standard error. Never throws but for want of memory.
int runCommandLine(std::span<const char* const> arguments);

}  // namespace tidemark
