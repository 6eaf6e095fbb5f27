#pragma once

#include "FileDescriptor.h"

#include <sys/types.h>

#include <functional>

namespace tidemark {

/// Runs a function in a process of its own, which ends with the number that the function returns. For processes
/// with one thread.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<int()>& body);

    /// Kills the process unless it has been waited for.
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Readable once the process has ended.
    int descriptor() const { return m_end.get(); }

    /// Waits for the end and returns the number; -1 if it was killed.
    int wait();

    void kill();

private:
    FileDescriptor m_end;
    pid_t m_process = -1;
};

/// Becomes the ordinary user 65534 for good; false if this process may not.
bool becomeOrdinaryUser();

}  // namespace tidemark
