#pragma once

#include "Place.h"
#include "Suite.h"

namespace tidemark::bench {

// One function per group of cases, each in a source of that name. What they prepare lies in `place`.

/// Previews as whole processes, beside find and a bare walk.
void addPreviewCases(const Place& place, Suite& suite);

/// A whole sweep, beside a bare loop of the same writes and renames.
void addSweepCases(const Place& place, Suite& suite);

/// Actions of a sweep while the journal is long.
void addJournalCases(const Place& place, Suite& suite);

/// What an application asks of the journal for display.
void addActivityCases(const Place& place, Suite& suite);

/// For how long the application's model holds the main thread while the journal is long, in each of the places.
void addModelCases(const std::vector<Place>& places, Suite& suite);

/// `tidemarkctl watch` with nothing to do for `rest`, beside an empty Qt program; in the first of the
/// places, and a large tree in the last.
void addIdleCases(const std::vector<Place>& places, Seconds rest, Suite& suite);

/// The application's start until its icon is in the panel, and its rest after that for `rest`, beside an empty
/// application with a tray icon; on a display that nobody sees.
void addDesktopCases(const Place& place, Seconds rest, Suite& suite);

/// The journal's text, in memory.
void addCodingCases();

/// Deciding what happens to a file, in memory.
void addPlanningCases();

}  // namespace tidemark::bench
