#include "ComingOfAge.h"

#include "RuleChoice.h"
#include "StabilityGate.h"

#include <algorithm>

namespace tidemark::ComingOfAge {

namespace {

/// `now` when it has.
Date restedFrom(const FileInfo& file, Seconds gracePeriod, Date now)
{
    const auto hasRested = [&](Date moment) {
        return StabilityGate::hasRested(file, gracePeriod, moment);
    };
    return hasRested(now) ? now : firstMoment(file.modified, gracePeriod, hasRested);
}

/// `now` when one does.
Date matchedFrom(const FileInfo& file, const std::vector<Rule>& rules, Date now)
{
    const RuleChoice choice = RuleChoice::of(file, rules, now);
    return choice.rule != nullptr ? now : choice.matchesFrom;
}

}  // namespace

std::optional<Date> of(
    const FileInfo& file, const std::vector<Rule>& rules, Seconds gracePeriod, Date now, Date bound)
{
    // The cheapest question first: of many files that came together, it settles nearly all.
    const Date rested = restedFrom(file, gracePeriod, now);
    if (!(rested < bound) || StabilityGate::isInProgress(file))
        return std::nullopt;
    const Date due = std::max(rested, matchedFrom(file, rules, now));
    if (!(due > now && due < bound))
        return std::nullopt;
    return due;
}

}  // namespace tidemark::ComingOfAge
