#include "StabilityGate.h"

#include "Text.h"

#include <algorithm>
#include <string>

namespace tidemark::StabilityGate {

bool isStable(const FileInfo& file, Seconds gracePeriod, Date now)
{
    const std::string name = lowercased(file.url.lastPathComponent());
    const bool isInProgress = std::ranges::any_of(
        inProgressSuffixes, [&](std::string_view suffix) { return name.ends_with(suffix); });
    return !isInProgress && now - file.modified >= gracePeriod;
}

}  // namespace tidemark::StabilityGate
