#pragma once

#include "Settings.h"

#include <string>

namespace tidemark {

/// The one line that says what Tidemark is at, such as "Watching 2 folders".
inline std::string statusText(const Settings& settings)
{
    if (settings.isPaused)
        return "Paused";
    const std::size_t count = settings.folders.size();
    if (count == 0)
        return "No folders watched";
    return "Watching " + std::to_string(count) + " folder" + (count == 1 ? "" : "s");
}

}  // namespace tidemark
