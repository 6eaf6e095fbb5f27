#pragma once

#include "FileDescriptor.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tidemark {

/// Notices file systems that are mounted and unmounted, which no folder tells of. For one thread.
class MountTable {
public:
    /// Without /proc nothing is ever noticed.
    MountTable();

    /// Polled for POLLPRI; -1 when there is nothing to poll. The kernel tells a change to one poll only, which
    /// has to be passed on to `noteChange`.
    int descriptor() const { return m_table.get(); }
    void noteChange() { m_hasChanged = true; }

    /// Whether anything was mounted or unmounted since `takeChanges` was last called.
    bool hasChanged();

    /// The folders at which something was mounted or unmounted since the last call.
    std::vector<std::string> takeChanges();

private:
    using Mount = std::pair<std::string, int>;  ///< Where, and the kernel's number for it.

    static std::set<Mount> read();

    FileDescriptor m_table;
    std::set<Mount> m_mounts;
    bool m_hasChanged = false;
};

}  // namespace tidemark
