#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// How a program is started.
struct ProgramStart {
    std::string path;
    std::vector<std::string> arguments;
    std::map<std::string, std::string>
        environment;  ///< All of it, but for the sanitizers' options.
    std::string workingFolder;
    std::string outputFile;  ///< Where standard output goes; empty: it is closed.
    int outputDescriptor = -1;  ///< Where it goes instead, if this is set.
    std::string errorFile;  ///< The same for standard error.
    std::optional<std::size_t> largestFile = {};  ///< In bytes: what it may write into one file.
};

/// A program that runs beside the test; killed at the end of the scope if it still runs.
class ProgramProcess {
public:
    explicit ProgramProcess(const ProgramStart& start);
    ~ProgramProcess();

    ProgramProcess(const ProgramProcess&) = delete;
    ProgramProcess& operator=(const ProgramProcess&) = delete;

    pid_t pid() const { return m_pid; }
    void signal(int number) const;

    /// Waits for the end and returns the exit status, negative for the signal that ended it.
    int wait();

private:
    pid_t m_pid = -1;
};

}  // namespace tidemark
