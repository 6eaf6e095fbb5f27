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

Executor::Executor(JournalStore store, FileManager& fileManager)
    : m_store(std::move(store))
    , m_fileManager(&fileManager)
{
}

SweepRecord Executor::apply(
    const SweepPlan& plan, Date startedAt, Date now, SweepObserver* observer)
{
    SweepObserver nobody;
    SweepObserver& follower = observer != nullptr ? *observer : nobody;
    JournalWriter journal(m_store, startedAt);
    for (std::size_t index = 0; index < plan.actions.size() && !follower.shouldStop(); ++index) {
        follower.willPerform(index, plan.actions.size());
        performOrWithdraw(plan.actions[index], journal, now, follower);
    }
    return journal.record();
}

void Executor::performOrWithdraw(
    const PlannedAction& action, JournalWriter& journal, Date now, SweepObserver& observer)
{
    const std::size_t entriesBefore = journal.record().entries.size();
    try {
        if (!m_fileManager->fileExists(action.source))
            return;
    } catch (const std::filesystem::filesystem_error& error) {
        observer.didFail(action, error);  // nothing was attempted, so there is nothing to withdraw
        return;
    }
    try {
        perform(action, journal, now);
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

void Executor::perform(const PlannedAction& action, JournalWriter& journal, Date now)
{
    if (const auto wanted = Destination::of(action))
        journalThenMove(action, *wanted, journal, now);
    else
        journalThenTrash(action.source, journal, now);
}

void Executor::journalThenMove(
    const PlannedAction& action, const Destination& wanted, JournalWriter& journal, Date now)
{
    const FileURL place = wanted.prepare(*m_fileManager);
    journal.append(JournalEntry::between(opOf(action), action.source, place, now));
    journal.save();
    m_fileManager->moveItem(action.source, place);

    if (action.stampCreated && std::holds_alternative<SweepAction::FileInto>(action.action.value)) {
        try {
            m_fileManager->setCreationDate(place, *action.stampCreated);
        } catch (const std::filesystem::filesystem_error&) {
            // Many file systems keep no creation date that could be set; the move stands.
        }
    }
}

void Executor::journalThenTrash(const FileURL& source, JournalWriter& journal, Date now)
{
    journal.append(JournalEntry::between(JournalEntry::Op::trash, source, source, now));
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
    std::for_each(entries.rbegin(), entries.rend(), [&](const JournalEntry& entry) {
        if (observer.shouldStop())
            throw std::filesystem::filesystem_error("stopped before everything was restored",
                std::make_error_code(std::errc::operation_canceled));
        restore(entry, observer);
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

void Executor::restore(const JournalEntry& entry, UndoObserver& observer)
{
    const FileURL now(entry.to);
    if (!canExist(entry.to) || !m_fileManager->fileExists(now)) {
        observer.didFindGone(entry);
        return;
    }
    const FileURL place = Destination::at(entry.from).prepare(*m_fileManager);
    m_fileManager->moveItem(now, place);
    observer.didRestore(entry, place);
}

}  // namespace tidemark
