#pragma once

#include "World.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace tidemark {

/// Whether the environment asks for the long form of the tests (TIDEMARK_LONG_TESTS=1), which leaves no
/// combination out.
bool wantsLongTests();

/// Prints what was tried, in the form that ./test collects: "counted: 12 kill points, 1 copy left". Each
/// part is a number and what it counts.
void printCounts(const std::string& counts);

/// Runs a test in the world of each scenario; skips where the machine cannot trace, or have a second file
/// system.
class SafetyTest : public testing::TestWithParam<Scenario> {
protected:
    static void inWorld(const std::function<void(World&)>& body);
};

std::string scenarioName(const testing::TestParamInfo<Scenario>& info);

}  // namespace tidemark
