#pragma once

#include "PeopleText.h"
#include "RuleAction.h"

#include <string>

namespace tidemark {

/// Where a rule puts its files, for people: such as "-> ~/Downloads/Archive by month", or "-> Trash". Safe
/// to display.
std::string ruleDestination(const RuleAction& action, const PeopleText& people);

}  // namespace tidemark
