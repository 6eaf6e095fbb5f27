#pragma once

#include "FileDescriptor.h"

namespace tidemark {

/// Wakes a thread that polls. Safe from any thread.
class WakeUp {
public:
    /// Throws system_error if there is no descriptor left.
    WakeUp();

    void signal();

    /// Takes all signals back that were given so far.
    void clear();

    bool isSignalled() const;

    /// Readable while a signal was given and not taken back.
    int descriptor() const { return m_event.get(); }

private:
    FileDescriptor m_event;
};

}  // namespace tidemark
