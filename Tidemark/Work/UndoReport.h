#pragma once

#include "SweepRecord.h"
#include "UndoObserver.h"
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

        void encode(JSONEncoder& encoder) const;
        static Restored decode(const JSONDecoder& decoder);

        bool operator==(const Restored&) const = default;
    };

    /// Absent when there was nothing to undo, and after a failure.
    std::optional<SweepRecord> record = {};
    bool didPause = false;  ///< Sweeping was not paused before.
    std::vector<Restored> restored = {};
    std::vector<JournalEntry> gone = {};
    std::optional<std::string> failure = {};  ///< Why not everything was restored.

    void encode(JSONEncoder& encoder) const;
    static UndoReport decode(const JSONDecoder& decoder);

    bool operator==(const UndoReport&) const = default;
};

/// Whether the journal holds a sweep. Throws what JournalStore::load throws.
bool hasSweepToUndo(Workspace& workspace);

/// Pauses sweeping; whether it was not paused before. Throws what saving the settings throws.
bool pauseBeforeUndo(Workspace& workspace);

/// Takes the last sweep back; sweeping has been paused. Never throws: a failure is in the report. To be
/// called where the controller sweeps. `observer` follows it.
UndoReport takeBackLastSweep(Workspace& workspace, Date now, UndoObserver& observer);

/// All of this, one after the other: pauses sweeping if there is something to undo, then takes it back.
/// Throws CommandFailure when the settings cannot be read, and what `hasSweepToUndo` and `pauseBeforeUndo`
/// throw, with nothing undone.
UndoReport performUndo(Workspace& workspace, Date now);

}  // namespace tidemark
