#pragma once

#include "Subprocess.h"

#include <sys/wait.h>

#include <csignal>

namespace tidemark {

/// A process that does nothing until it is ended: the application that a swap waits for.
class SleepingProcess {
public:
    SleepingProcess() = default;
    ~SleepingProcess() { end(); }

    SleepingProcess(const SleepingProcess&) = delete;
    SleepingProcess& operator=(const SleepingProcess&) = delete;

    pid_t id() const { return m_process; }

    void end()
    {
        if (m_hasEnded)
            return;
        m_hasEnded = true;
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }

private:
    pid_t m_process = Subprocess::start({"sleep", "1000"}, Subprocess::Session::shared);
    bool m_hasEnded = false;
};

}  // namespace tidemark
