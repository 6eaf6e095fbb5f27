#pragma once

#include "Operations.h"
#include "RemoteClient.h"
#include "WorkMessages.h"

namespace tidemark {

/// Has everything carried out by the running process that holds the lock of the support folder.
///
/// Beside what Operations promises, all throw CommandFailure when that process ends before it has answered.
class RemoteOperations final : public Operations {
public:
    explicit RemoteOperations(RemoteClient client);

    SweepReport sweep(std::optional<Date> now, SweepObserver& observer) override;
    UndoReport undo(std::optional<Date> now) override;
    PauseChange setPaused(bool isPaused) override;
    FolderChanges addFolders(const std::vector<GivenPath>& paths) override;
    FolderChanges removeFolders(const std::vector<GivenPath>& paths) override;

    /// Brings the windows of that process to the front. `activationToken` gives it the right to do so on
    /// Wayland; it may be empty. Throws CommandFailure when that process has no windows.
    void bringForward(const std::string& activationToken);

private:
    std::string answerTo(const WorkRequest& request, SweepObserver& observer);

    RemoteClient m_client;
};

}  // namespace tidemark
