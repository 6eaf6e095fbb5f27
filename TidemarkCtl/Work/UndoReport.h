#pragma once

#include "Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// What an undo did. A plain value.
struct UndoReport {
    struct Restored {
        JournalEntry entry;
        std::string place;  ///< `entry.from`, or a name beside it where that was taken.
    };

    std::optional<SweepRecord>
        record;  ///< Absent when there was nothing to undo, and after a failure.
    bool didPause = false;  ///< Sweeping was not paused before.
    std::vector<Restored> restored = {};
    std::vector<JournalEntry> gone = {};
    std::optional<std::string> failure = {};  ///< Why not everything was restored.
};

/// Pauses sweeping if there is something to undo, then takes the last sweep back. Throws CommandFailure when
/// the settings cannot be read, what JournalStore::load throws and, with nothing undone, what saving the
/// settings throws. A failure after that is in the report.
UndoReport performUndo(Workspace& workspace, Date now);

}  // namespace tidemark
