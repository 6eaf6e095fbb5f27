#pragma once

#include "ReplacedSettings.h"
#include "Workspace.h"

#include <optional>

namespace tidemark {

/// What pausing or resuming came to. A plain value.
struct PauseChange {
    bool wasSoAlready = false;
    std::optional<ReplacedSettings> replaced = {};

    void encode(JSONEncoder& encoder) const;
    static PauseChange decode(const JSONDecoder& decoder);

    bool operator==(const PauseChange&) const = default;
};

/// Throws what saving the settings throws.
PauseChange changePause(Workspace& workspace, bool isPaused);

}  // namespace tidemark
