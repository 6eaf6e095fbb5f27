#include "LocalOperations.h"

namespace tidemark {

LocalOperations::LocalOperations(SupportLock lock, const FileURL& supportFolder)
    : m_lock(std::move(lock))
    , m_workspace(supportFolder)
{
}

SweepReport LocalOperations::sweep(std::optional<Date> now, SweepObserver& observer)
{
    m_workspace.requireReadableSettings();
    return performSweep(m_workspace, m_workspace.controller().settings(),
        now.value_or(m_workspace.now()), observer);
}

UndoReport LocalOperations::undo(std::optional<Date> now)
{
    return performUndo(m_workspace, now.value_or(m_workspace.now()));
}

PauseChange LocalOperations::setPaused(bool isPaused)
{
    return changePause(m_workspace, isPaused);
}

FolderChanges LocalOperations::addFolders(const std::vector<GivenPath>& paths)
{
    return tidemark::addFolders(m_workspace, paths);
}

FolderChanges LocalOperations::removeFolders(const std::vector<GivenPath>& paths)
{
    return tidemark::removeFolders(m_workspace, paths);
}

}  // namespace tidemark
