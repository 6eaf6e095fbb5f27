#pragma once

#include "Destination.h"
#include "FileManager.h"
#include "JournalStore.h"
#include "JournalWriter.h"
#include "SweepObserver.h"
#include "SweepPlan.h"
#include "UndoObserver.h"

#include <optional>
#include <vector>

namespace tidemark {

/// Carries out plans and undoes the last one, with every step in the journal before a file is touched.
///
/// So a crash leaves at worst an entry for a move that never happened, never a moved file that the journal
/// does not know. Nothing is ever deleted. The folders of an action are those that its path led to when they
/// were first looked at: where something else stands in the place of one by then, the action fails. Keeps no
/// state between calls and has no lock: calls for one journal follow one another, under the SupportLock.
class Executor {
public:
    /// `fileManager` outlives the executor.
    Executor(JournalStore store, FileManager& fileManager);

    const JournalStore& store() const { return m_store; }

    /// Performs the plan in its order and returns its record as it stands in the journal. A file that is
    /// gone is skipped; an action that fails is withdrawn from the journal and the next one follows. Ends
    /// before the next action when the observer wants it. Throws only when the journal cannot be loaded; no
    /// file has been touched then.
    SweepRecord apply(
        const SweepPlan& plan, Date startedAt, Date now, SweepObserver* observer = nullptr);

    /// The same in folders that were looked at already, when the plan was made, say. Holds more of them.
    SweepRecord apply(const SweepPlan& plan, HeldFolders& folders, Date startedAt, Date now,
        SweepObserver* observer);

    /// Moves the files of the journal's last sweep back, the last one first, never over another file, and
    /// removes the sweep from the journal. Nothing when there is no sweep. Throws the first failure, and
    /// filesystem_error with operation_canceled when the observer ends it; the sweep stays in the journal
    /// then, and a later undo goes on where this one ended.
    std::optional<SweepRecord> undoLastSweep(Date now, UndoObserver* observer = nullptr);

private:
    struct Sweep;

    void performOrWithdraw(const PlannedAction& action, Sweep& sweep, SweepObserver& observer);
    std::optional<HeldEntry> sourceOf(
        const PlannedAction& action, Sweep& sweep, SweepObserver& observer);
    std::optional<HeldEntry> find(const FileURL& file, HeldFolders& folders);
    void perform(const PlannedAction& action, const HeldEntry& source, Sweep& sweep);
    void journalThenMove(const PlannedAction& action, const HeldEntry& source,
        const Destination& wanted, Sweep& sweep);
    void journalThenTrash(const HeldEntry& source, Sweep& sweep);
    void flushFolders(const std::vector<JournalEntry>& entries);
    void restoreAll(const std::vector<JournalEntry>& entries, UndoObserver& observer);
    void restore(
        const JournalEntry& entry, HeldFolders& folders, TakenNames& taken, UndoObserver& observer);

    JournalStore m_store;
    FileManager* m_fileManager;
};

}  // namespace tidemark
