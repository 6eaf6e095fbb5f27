#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tidemark {

/// Other programs, started with this process's environment and nothing else of it: standard streams that lead
/// nowhere, no open files, no blocked signals. Any thread.
namespace Subprocess {

enum class Session {
    shared,  ///< It ends with ours, by what the terminal or the session tells.
    own,  ///< It outlives the group and the session of this process.
};

/// The name of the program, by PATH unless it has a slash, comes first. Throws system_error if it cannot be
/// started.
pid_t start(const std::vector<std::string>& command, Session session);

/// Waits for the end and returns the exit status; -1 when a signal ended it. It is killed as soon as the
/// descriptor `stop` is readable, and also after `seconds`, unless that is 0.
int wait(pid_t process, int stop, int seconds = 0);

/// Waits until the process executes this very command, which another one in front of it, such as
/// systemd-run(1), was told to turn into. False if it ends before or has not done so in `seconds`; it is
/// killed then.
bool becomes(pid_t process, const std::vector<std::string>& command, int seconds);

}  // namespace Subprocess

}  // namespace tidemark
