#include "Executor.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>

namespace tidemark {

/// A journal that was written by hand may name what no file system can hold.
static bool canExist(std::string_view path)
{
    return path.starts_with('/') && path.find('\0') == std::string_view::npos;
}

/// What the actions of one sweep share.
struct Executor::Sweep {
    JournalWriter journal;
    HeldFolders& folders;
    Date now;
    TakenNames taken;
};

Executor::Executor(JournalStore store, FileManager& fileManager)
    : m_store(std::move(store))
    , m_fileManager(&fileManager)
{
}

SweepRecord Executor::apply(
    const SweepPlan& plan, Date startedAt, Date now, SweepObserver* observer)
{
    HeldFolders folders(*m_fileManager);
    return apply(plan, folders, startedAt, now, observer);
}

SweepRecord Executor::apply(
    const SweepPlan& plan, HeldFolders& folders, Date startedAt, Date now, SweepObserver* observer)
{
    SweepObserver nobody;
    SweepObserver& follower = observer != nullptr ? *observer : nobody;
    Sweep sweep{JournalWriter(m_store, startedAt), folders, now, TakenNames(*m_fileManager)};
    for (std::size_t index = 0; index < plan.actions.size() && !follower.shouldStop(); ++index) {
        follower.willPerform(index, plan.actions.size());
        performOrWithdraw(plan.actions[index], sweep, follower);
    }
    return sweep.journal.record();
}

std::optional<HeldEntry> Executor::sourceOf(
    const PlannedAction& action, Sweep& sweep, SweepObserver& observer)
{
    try {
        return find(action.source, sweep.folders);
    } catch (const std::filesystem::filesystem_error& error) {
        observer.didFail(action, error);  // nothing was attempted, so there is nothing to withdraw
        return std::nullopt;
    }
}

void Executor::performOrWithdraw(const PlannedAction& action, Sweep& sweep, SweepObserver& observer)
{
    JournalWriter& journal = sweep.journal;
    const std::size_t entriesBefore = journal.record().entries.size();
    const std::optional<HeldEntry> source = sourceOf(action, sweep, observer);
    if (!source)
        return;
    try {
        perform(action, *source, sweep);
        observer.didPerform(journal.record().entries.back());
    } catch (const std::exception& error) {
        // One file that cannot be moved never stops a sweep.
        journal.truncate(entriesBefore);
        try {
            journal.save();
        } catch (const std::filesystem::filesystem_error&) {
            // An entry for a move that did not happen does no harm: undo finds nothing at its `to`.
        }
        observer.didFail(action, error);
    }
}

/// Nothing when it is gone.
std::optional<HeldEntry> Executor::find(const FileURL& file, HeldFolders& folders)
{
    const HeldFolder* folder = folders.find(Destination::at(file.path()).folder);
    if (folder == nullptr)
        return std::nullopt;
    HeldEntry entry{*folder, file};
    if (!m_fileManager->fileExists(entry))
        return std::nullopt;
    return entry;
}

void Executor::perform(const PlannedAction& action, const HeldEntry& source, Sweep& sweep)
{
    if (const auto wanted = Destination::of(action))
        journalThenMove(action, source, *wanted, sweep);
    else
        journalThenTrash(source, sweep);
}

void Executor::journalThenMove(
    const PlannedAction& action, const HeldEntry& source, const Destination& wanted, Sweep& sweep)
{
    const HeldEntry place = wanted.prepare(sweep.folders, sweep.taken);
    sweep.taken.forget(source);
    sweep.journal.append(JournalEntry::between(opOf(action), source.url, place.url, sweep.now));
    sweep.journal.save();
    m_fileManager->moveItem(source, place);

    if (action.stampCreated && std::holds_alternative<SweepAction::FileInto>(action.action.value)) {
        try {
            m_fileManager->setCreationDate(place.url, *action.stampCreated);
        } catch (const std::filesystem::filesystem_error&) {
            // Many file systems keep no creation date that could be set; the move stands.
        }
    }
}

void Executor::journalThenTrash(const HeldEntry& source, Sweep& sweep)
{
    sweep.taken.forget(source);
    JournalWriter& journal = sweep.journal;
    journal.append(
        JournalEntry::between(JournalEntry::Op::trash, source.url, source.url, sweep.now));
    journal.save();
    const auto place = m_fileManager->trashItem(source);
    if (!place)
        return;
    journal.setLastDestination(place->path());
    try {
        journal.save();
    } catch (const std::filesystem::filesystem_error& error) {
        throw std::filesystem::filesystem_error(
            "trashed, but the journal could not be told the place", place->path(), error.code());
    }
}

std::optional<SweepRecord> Executor::undoLastSweep(Date /*now*/, UndoObserver* observer)
{
    UndoObserver nobody;
    UndoObserver& follower = observer != nullptr ? *observer : nobody;
    Journal journal = m_store.load();
    if (journal.sweeps.empty())
        return std::nullopt;

    restoreAll(journal.sweeps.back().entries, follower);
    flushFolders(journal.sweeps.back().entries);

    SweepRecord undone = std::move(journal.sweeps.back());
    journal.sweeps.pop_back();
    m_store.save(journal);
    return undone;
}

void Executor::restoreAll(const std::vector<JournalEntry>& entries, UndoObserver& observer)
{
    HeldFolders folders(*m_fileManager);
    TakenNames taken(*m_fileManager);
    std::for_each(entries.rbegin(), entries.rend(), [&](const JournalEntry& entry) {
        if (observer.shouldStop())
            throw std::filesystem::filesystem_error("stopped before everything was restored",
                std::make_error_code(std::errc::operation_canceled));
        restore(entry, folders, taken, observer);
    });
}

/// A power cut must not take back a move, maybe on another disk, that the journal knows nothing of any more.
void Executor::flushFolders(const std::vector<JournalEntry>& entries)
{
    std::set<std::string_view> folders;
    for (const JournalEntry& entry : entries) {
        if (!canExist(entry.to) || !canExist(entry.from))
            continue;
        folders.insert(Destination::at(entry.to).folder);
        folders.insert(Destination::at(entry.from).folder);
    }
    for (const std::string_view folder : folders)
        m_fileManager->flushDirectory(FileURL::directory(std::string(folder)));
}

void Executor::restore(
    const JournalEntry& entry, HeldFolders& folders, TakenNames& taken, UndoObserver& observer)
{
    const auto now = canExist(entry.to) ? find(FileURL(entry.to), folders) : std::nullopt;
    if (!now) {
        observer.didFindGone(entry);
        return;
    }
    const HeldEntry place = Destination::at(entry.from).prepare(folders, taken);
    taken.forget(*now);
    m_fileManager->moveItem(*now, place);
    observer.didRestore(entry, place.url);
}

}  // namespace tidemark
