#pragma once

#include "PlannedAction.h"

#include <optional>
#include <vector>

namespace tidemark {

/// What a sweep is to do, in this order. A plain value.
struct SweepPlan {
    std::vector<PlannedAction> actions = {};

    /// When the earliest of the files that were left alone only because they are too young comes of age.
    /// Nothing when there is none; else finite and after the moment of the plan.
    std::optional<Date> comingOfAge = std::nullopt;

    bool operator==(const SweepPlan&) const = default;
};

}  // namespace tidemark
