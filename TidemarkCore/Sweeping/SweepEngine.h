#pragma once

#include "Executor.h"
#include "FileInfo.h"
#include "FileManager.h"
#include "HeldFolders.h"
#include "Rehearsal.h"
#include "SweepObserver.h"
#include "WatchedFolder.h"

#include <optional>
#include <vector>

namespace tidemark {

/// Turns a list of watched folders into one executed sweep. Keeps no state between sweeps, has no lock.
class SweepEngine {
public:
    /// `fileManager` outlives the engine.
    SweepEngine(Executor executor, FileManager& fileManager);

    /// Plans every folder against its own rules, then carries all of it out as one sweep. Without anything
    /// to do, or when the observer ends it before the last scan, the result is an empty record and neither
    /// disk nor journal is touched. The folders that are scanned are those that files are moved out of: what
    /// comes into the place of one meanwhile makes its actions fail. Throws what the scan of any folder throws,
    /// before anything is moved, and what Executor::apply throws.
    SweepRecord sweep(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
        Date startedAt, Date now, SweepObserver* observer = nullptr);

    /// The joined plan of all folders, in their order: what `sweep` would carry out. A folder that is
    /// listed twice is planned twice. Empty when the observer ends it before the last scan. Throws what
    /// the scan of any folder throws.
    SweepPlan plan(const std::vector<WatchedFolder>& folders, Seconds gracePeriod, Date now,
        SweepObserver* observer = nullptr);

    /// What `sweep` would do, to the exact places; changes nothing. Throws what the scan of any folder throws.
    Rehearsal rehearse(const std::vector<WatchedFolder>& folders, Seconds gracePeriod, Date now,
        SweepObserver* observer = nullptr);

    /// When a sweep will next have something to do, as far as the files that are there now tell: `now` when
    /// it already has, else the coming of age of the earliest; nothing when there is none. Changes nothing.
    /// Throws what the scan of any folder throws.
    std::optional<Date> nextSweepDue(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
        Date now, SweepObserver* observer = nullptr);

    /// The plan for the files of one folder, without those that are not stable yet; they count for the
    /// plan's `comingOfAge`. Never fails.
    static SweepPlan plan(
        std::vector<FileInfo> files, const std::vector<Rule>& rules, Seconds gracePeriod, Date now);

private:
    SweepPlan planAll(const std::vector<WatchedFolder>& folders, Seconds gracePeriod, Date now,
        SweepObserver* observer, HeldFolders* held);

    Executor m_executor;
    FileManager* m_fileManager;
};

}  // namespace tidemark
