#pragma once

#include "FileInfo.h"
#include "FirstMoment.h"
#include "Rule.h"

#include <optional>
#include <vector>

namespace tidemark {

/// Tells when a file will be old enough to be swept. It makes no event then: whoever wants to sweep it in
/// time has to set a timer.
namespace ComingOfAge {

/// When a file that is left alone at `now` will have rested for the grace period and be old enough for the
/// first of the rules that fit it otherwise: a moment after `now`, finite but maybe in a far future, at
/// which StabilityGate and Planner let it through if it stays as it is. Nothing when that never happens,
/// when it is so already, or when it is not before `bound`. Touches no disk.
std::optional<Date> of(const FileInfo& file, const std::vector<Rule>& rules, Seconds gracePeriod,
    Date now, Date bound = never);

}  // namespace ComingOfAge

}  // namespace tidemark
