#pragma once

#include "ReplacedSettings.h"
#include "StandardStreams.h"

#include <optional>

namespace tidemark {

/// Says on standard error where a settings file went that could not be read.
inline void tellOfReplaced(const std::optional<ReplacedSettings>& replaced)
{
    if (replaced)
        StandardStreams::complain("the settings could not be read (" + replaced->problem
            + "); the old file is kept as " + replaced->keptAs);
}

}  // namespace tidemark
