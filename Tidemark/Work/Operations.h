#pragma once

#include "FolderChanges.h"
#include "PauseChange.h"
#include "SweepReport.h"
#include "UndoReport.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tidemark {

/// The commands that change something in a support folder, whoever carries them out: this process, which
/// holds the folder's lock then, or the running one that holds it. The results are the same.
///
/// Blocking, for one thread; made for one operation. All throw CommandFailure and filesystem_error as
/// performSweep, performUndo, changePause, addFolders and removeFolders do.
class Operations {
public:
    virtual ~Operations() = default;

    /// Waits for the right to change the files in the folder, which is made if it is missing. `willWait` is
    /// called once if another short command has to be waited for. Throws filesystem_error.
    static std::unique_ptr<Operations> open(
        const FileURL& supportFolder, const std::function<void()>& willWait);

    /// `now` stands in for the present. `observer` is told what is looked through and how far it is.
    virtual SweepReport sweep(std::optional<Date> now, SweepObserver& observer) = 0;
    virtual UndoReport undo(std::optional<Date> now) = 0;
    virtual PauseChange setPaused(bool isPaused) = 0;
    virtual FolderChanges addFolders(const std::vector<GivenPath>& paths) = 0;
    virtual FolderChanges removeFolders(const std::vector<GivenPath>& paths) = 0;
};

}  // namespace tidemark
