#pragma once

#include "JSONEncoder.h"
#include "Workspace.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// How things stand. A plain value.
struct StatusReport {
    struct Folder {
        std::string path;
        bool sortsMarkdown = true;
        std::optional<std::string> problem;  ///< Why it cannot be read.

        void encode(JSONEncoder& encoder) const;
    };

    std::string statusText;
    bool isPaused = false;
    bool hasOnboarded = false;
    std::vector<Folder> folders;
    std::optional<std::string> settingsProblem;  ///< Why the settings are the defaults.
    std::optional<std::string> journalProblem;  ///< Why there is no undo.
    std::optional<SweepFailure> lastFailure;
    bool canUndo = false;

    void encode(JSONEncoder& encoder) const;
};

/// Never fails for a file that cannot be read: the report tells it.
StatusReport readStatus(Workspace& workspace);

}  // namespace tidemark
