#pragma once

#include <sys/resource.h>

namespace tidemark {

/// Keeps this process from taking more than 256 MiB of memory for data while it listens to a server: a
/// body is limited, but Qt keeps an answer's head of any length. Where it would take more it ends,
/// without a core file.
///
/// Does nothing in a build with sanitizers, which reserve more than there is.
class MemoryLimit {
public:
    MemoryLimit();

    /// As it was before, also for the programs that this one starts.
    void lift() const;

private:
    rlimit m_data = {};
    rlimit m_core = {};
};

}  // namespace tidemark
