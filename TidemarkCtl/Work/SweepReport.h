#pragma once

#include "Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// What a sweep did. A plain value.
struct SweepReport {
    struct Failure {
        std::string path;
        std::string reason;
    };

    bool wasPaused = false;  ///< Nothing was done then.
    bool watchesFolders = false;  ///< Else there was nothing to look through.
    SweepRecord record;
    std::vector<Failure> failures = {};

    /// One line on the files that could not be moved; nothing when there are none.
    std::optional<std::string> summaryOfFailures() const;
};

/// Sweeps, and remembers for the status whether that failed. Throws CommandFailure when the settings cannot
/// be read, and what SweepController::sweepNow throws. `observer` follows it.
SweepReport performSweep(Workspace& workspace, Date now, SweepObserver& observer);

}  // namespace tidemark
