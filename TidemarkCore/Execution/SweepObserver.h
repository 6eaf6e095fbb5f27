#pragma once

#include "JournalEntry.h"
#include "PlannedAction.h"

#include <cstddef>
#include <exception>

namespace tidemark {

/// Follows a sweep while it runs, and may end it early. Called on the thread that sweeps; must not throw.
class SweepObserver {
public:
    virtual ~SweepObserver() = default;

    virtual void willScan(const FileURL& /*folder*/) { }

    /// When the earliest of the files that are left alone only because they are too young will be old
    /// enough: after the sweep's `now`, finite, but maybe in a far future. Called at most once, when every
    /// folder was scanned and nothing has been performed yet; not called when there is no such file.
    virtual void willComeOfAge(Date /*earliest*/) { }

    /// Asked before each scan of a folder and before each action. True ends the sweep there: what was done is
    /// done and in the journal, every other file stays as it is.
    virtual bool shouldStop() { return false; }

    virtual void willPerform(std::size_t /*index*/, std::size_t /*count*/) { }
    virtual void didPerform(const JournalEntry& /*entry*/) { }

    /// The file is still at its place, but for one case: it lies in the Trash and the journal could not
    /// be told where.
    virtual void didFail(const PlannedAction& /*action*/, const std::exception& /*error*/) { }
};

}  // namespace tidemark
