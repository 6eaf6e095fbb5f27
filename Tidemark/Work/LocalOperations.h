#pragma once

#include "LocalWorkspace.h"
#include "Operations.h"
#include "SupportLock.h"

namespace tidemark {

/// Carries everything out in this process, which holds the lock.
class LocalOperations final : public Operations {
public:
    /// Throws like Workspace.
    LocalOperations(SupportLock lock, const FileURL& supportFolder);

    SweepReport sweep(std::optional<Date> now, SweepObserver& observer) override;
    UndoReport undo(std::optional<Date> now) override;
    PauseChange setPaused(bool isPaused) override;
    FolderChanges addFolders(const std::vector<GivenPath>& paths) override;
    FolderChanges removeFolders(const std::vector<GivenPath>& paths) override;

private:
    SupportLock m_lock;
    LocalWorkspace m_workspace;
};

}  // namespace tidemark
