#pragma once

#include "FileDescriptor.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark::bench {

/// A program that runs beside this one and says on its standard output how far it is.
class RunningProcess {
public:
    /// Starts it. `environment` holds "NAME=value" for variables that differ from this process's. Throws
    /// system_error.
    RunningProcess(std::vector<std::string> arguments, const std::vector<std::string>& environment);

    /// Asks it to end, and waits for that.
    ~RunningProcess();

    RunningProcess(const RunningProcess&) = delete;
    RunningProcess& operator=(const RunningProcess&) = delete;

    pid_t id() const { return m_process; }

    /// Waits for a line that holds `text`. Throws runtime_error if the output ends before, or if nothing
    /// has come for two minutes.
    std::string waitForLine(std::string_view text);

    /// All lines until the output ends. Throws runtime_error if nothing has come for two minutes.
    std::vector<std::string> remainingLines();

private:
    std::optional<std::string> nextLine();

    FileDescriptor m_output;
    std::string m_read;
    pid_t m_process = -1;
};

}  // namespace tidemark::bench
