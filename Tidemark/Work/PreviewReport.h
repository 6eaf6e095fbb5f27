#pragma once

#include "JSONEncoder.h"
#include "Workspace.h"

#include <functional>

namespace tidemark {

/// What a sweep would do. A plain value.
struct PreviewReport {
    bool isPaused = false;
    bool watchesFolders = false;  ///< Else there is nothing to look through.
    Rehearsal rehearsal;

    /// `didEncode` is called after each action, so that a long text can be passed on piece by piece.
    void encode(JSONEncoder& encoder, const std::function<void()>& didEncode) const;
};

/// Throws CommandFailure when the settings cannot be read, filesystem_error when a folder cannot be.
PreviewReport previewSweep(Workspace& workspace, Date now, SweepObserver& observer);

}  // namespace tidemark
