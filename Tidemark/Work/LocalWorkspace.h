#pragma once

#include "Clock.h"
#include "LinuxFileManager.h"
#include "Workspace.h"

namespace tidemark {

/// The real services that a LocalWorkspace brings along.
struct LocalServices {
    LinuxFileManager realFileManager;
    SystemClock realClock;
};

/// A workspace on the real disk and the real clock, for a command that runs by itself.
class LocalWorkspace : private LocalServices, public Workspace {
public:
    /// Throws like Workspace.
    explicit LocalWorkspace(const FileURL& supportFolder)
        : Workspace(supportFolder, realFileManager, realClock)
    {
    }
};

}  // namespace tidemark
