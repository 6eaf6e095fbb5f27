#pragma once

#include "UndoReport.h"

#include <optional>
#include <string>

namespace tidemark {

/// How an undo of the model ended. A plain value.
struct UndoOutcome {
    std::optional<UndoReport> report = {};  ///< Absent when it failed before anything was undone.
    std::optional<std::string> failure = {};  ///< Why.
};

}  // namespace tidemark
