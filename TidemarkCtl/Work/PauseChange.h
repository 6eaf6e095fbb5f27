#pragma once

#include "Workspace.h"

#include <optional>

namespace tidemark {

/// What pausing or resuming came to. A plain value.
struct PauseChange {
    bool wasSoAlready = false;
    std::optional<Workspace::ReplacedSettings> replaced = {};
};

/// Throws what saving the settings throws.
PauseChange changePause(Workspace& workspace, bool isPaused);

}  // namespace tidemark
