#pragma once

#include "Date.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>

namespace tidemark::bench {

/// What the kernel says of another process of this user. Throw system_error or runtime_error when it has ended.

/// The memory that a process holds now, in bytes.
struct ProcessMemory {
    std::size_t resident = 0;
    std::size_t unshared =
        0;  ///< Of that, what no other process maps: Private_Clean and Private_Dirty.
    std::size_t anonymous =
        0;  ///< Of that, what belongs to no file: what the process itself has written.

    static ProcessMemory of(pid_t process);
};

/// What all threads of a process have used of the processors, in user and kernel mode.
Seconds processorTimeOf(pid_t process);

/// How often each thread of a process has gone off a processor, and so was woken up.
class ContextSwitches {
public:
    static ContextSwitches of(pid_t process);

    /// How many there were since `before`, of threads that have begun since too.
    std::uint64_t since(const ContextSwitches& before) const;

private:
    std::map<pid_t, std::uint64_t> m_ofThread;
};

}  // namespace tidemark::bench
