#include "StabilityGate.h"

#include "Text.h"

#include <algorithm>
#include <string>

namespace tidemark::StabilityGate {

bool isStable(const FileInfo& file, Seconds gracePeriod, Date now)
{
    return hasRested(file, gracePeriod, now) && !isInProgress(file);
}

bool hasRested(const FileInfo& file, Seconds gracePeriod, Date now)
{
    return now - file.modified >= gracePeriod;
}

bool isInProgress(const FileInfo& file)
{
    const std::string name = lowercased(file.url.lastPathComponent());
    return std::ranges::any_of(
        inProgressSuffixes, [&](std::string_view suffix) { return name.ends_with(suffix); });
}

}  // namespace tidemark::StabilityGate
