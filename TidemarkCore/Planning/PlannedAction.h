#pragma once

#include "Date.h"
#include "FileURL.h"
#include "SweepAction.h"

#include <QUuid>

#include <optional>
#include <string>

namespace tidemark {

/// What is to be done to one file, and by which rule. A plain value.
struct PlannedAction {
    FileURL source;
    QUuid ruleID;
    std::string ruleName;
    SweepAction action;
    std::optional<Date>
        stampCreated;  ///< Written onto the file as its creation date after the move.

    bool operator==(const PlannedAction&) const = default;
};

}  // namespace tidemark
