#pragma once

#include "SweepReport.h"

#include <optional>
#include <string>

namespace tidemark {

/// How a sweep of the model ended. A plain value.
struct SweepOutcome {
    std::optional<SweepReport> report = {};  ///< Absent when the sweep failed as a whole.
    std::optional<std::string> failure = {};  ///< One line on what failed, files included.

    /// Whether it failed as a whole: a folder could not be read, or the journal not be written.
    bool hasFailed() const { return !report || !report->couldSaveJournal; }
};

}  // namespace tidemark
