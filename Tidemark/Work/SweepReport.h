#pragma once

#include "SweepObserver.h"
#include "SweepRecord.h"
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

        void encode(JSONEncoder& encoder) const;
        static Failure decode(const JSONDecoder& decoder);

        bool operator==(const Failure&) const = default;
    };

    bool wasPaused = false;  ///< Nothing was done then.
    bool watchesFolders = false;  ///< Else there was nothing to look through.
    bool wasStopped = false;  ///< Before every file was looked at.
    bool couldSaveJournal = true;  ///< Else files were left alone since no move could be noted.
    SweepRecord record;
    std::vector<Failure> failures = {};

    /// One line on the files that could not be moved; nothing when there are none.
    std::optional<std::string> summaryOfFailures() const;

    void encode(JSONEncoder& encoder) const;
    static SweepReport decode(const JSONDecoder& decoder);

    bool operator==(const SweepReport&) const = default;
};

/// Sweeps with `settings`, and remembers for the status whether that failed. Throws what
/// SweepController::sweep throws. `observer` follows it. To be called where the controller sweeps.
SweepReport performSweep(
    Workspace& workspace, const Settings& settings, Date now, SweepObserver& observer);

}  // namespace tidemark
