#pragma once

#include "FileManager.h"
#include "SweepPlan.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// What an action of a plan would come to.
struct RehearsedAction {
    PlannedAction planned;
    std::optional<FileURL> destination;  ///< Absent for a file that goes to the Trash.
    std::optional<std::string> obstacle;  ///< Why the action would fail, as far as can be told.
};

/// Goes through a plan without changing anything.
namespace Rehearsal {

/// The actions that Executor::apply would take, with the very places it would choose: names that earlier
/// actions take or free are counted in. A file that is gone, or that an earlier action moves away, is left
/// out. Never throws but for want of memory.
std::vector<RehearsedAction> rehearse(SweepPlan plan, FileManager& fileManager);

}  // namespace Rehearsal

}  // namespace tidemark
