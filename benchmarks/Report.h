#pragma once

#include "ProgressReporter.h"
#include "Suite.h"

#include <iosfwd>

namespace tidemark::bench {

/// What is shown in the end.
namespace Report {

/// Prints the tables of ratios, of peak memory and of what has no yardstick, without what was not measured.
void print(
    const Suite& suite, const std::vector<AbsoluteResult>& absoluteResults, std::ostream& output);

}  // namespace Report

}  // namespace tidemark::bench
