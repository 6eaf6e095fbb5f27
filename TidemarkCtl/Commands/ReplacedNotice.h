#pragma once

#include "StandardStreams.h"
#include "Workspace.h"

#include <optional>

namespace tidemark {

/// Says on standard error where a settings file went that could not be read.
inline void tellOfReplaced(const std::optional<Workspace::ReplacedSettings>& replaced)
{
    if (replaced)
        StandardStreams::complain("the settings could not be read (" + replaced->problem
            + "); the old file is kept as " + replaced->keptAs);
}

}  // namespace tidemark
