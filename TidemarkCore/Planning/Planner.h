#pragma once

#include "FileInfo.h"
#include "FileManager.h"
#include "Rule.h"
#include "SweepPlan.h"

#include <vector>

namespace tidemark {

/// Decides what is to be done to the files of a folder.
namespace Planner {

/// One action for each file that an enabled rule matches, in the order of the files; of several rules that
/// match, the first acts. The plan's `comingOfAge` is that of the files that are too young for every rule that
/// fits them otherwise. Never fails and touches no disk.
SweepPlan plan(std::vector<FileInfo> files, const std::vector<Rule>& rules, Date now);

/// The same for all files of `directory`. Throws what DirectoryScan::files throws.
SweepPlan plan(
    const FileURL& directory, const std::vector<Rule>& rules, Date now, FileManager& fileManager);

}  // namespace Planner

}  // namespace tidemark
