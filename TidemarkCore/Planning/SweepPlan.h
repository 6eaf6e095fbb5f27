#pragma once

#include "PlannedAction.h"

#include <vector>

namespace tidemark {

/// What a sweep is to do, in this order. A plain value.
struct SweepPlan {
    std::vector<PlannedAction> actions;

    bool operator==(const SweepPlan&) const = default;
};

}  // namespace tidemark
