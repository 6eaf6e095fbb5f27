#pragma once

#include "FileInfo.h"
#include "FirstMoment.h"
#include "Rule.h"

#include <string_view>
#include <vector>

namespace tidemark {

/// Which of a folder's rules acts on a file, or from when on one will. Valid as long as the rules.
struct RuleChoice {
    /// The first enabled rule that matches; null when none does.
    const Rule* rule = nullptr;

    /// Without a rule, the earliest moment at which an enabled one will match, which lies after `now`;
    /// `never` when the age is not all that is missing.
    Date matchesFrom = never;

    /// Of the file as it is; touches no disk.
    static RuleChoice of(const FileInfo& file, const std::vector<Rule>& rules, Date now);

    /// Whether the choice for a file with this name may depend on its screen-capture flag.
    static bool asksForFlag(std::string_view name, const std::vector<Rule>& rules);
};

}  // namespace tidemark
