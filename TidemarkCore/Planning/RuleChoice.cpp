#include "RuleChoice.h"

#include "Matcher.h"

#include <algorithm>

namespace tidemark {

/// For a minimum age that the file has not reached yet.
static Date oldEnoughFrom(const RuleMatch& match, const FileInfo& file)
{
    return firstMoment(Matcher::ageDate(match, file), *match.minAge,
        [&](Date moment) { return Matcher::isOldEnough(match, file, moment); });
}

RuleChoice RuleChoice::of(const FileInfo& file, const std::vector<Rule>& rules, Date now)
{
    RuleChoice choice;
    for (const Rule& rule : rules) {
        if (!rule.isEnabled || !Matcher::fitsApartFromAge(rule.match, file))
            continue;
        if (Matcher::isOldEnough(rule.match, file, now))
            return {.rule = &rule};
        choice.matchesFrom = std::min(choice.matchesFrom, oldEnoughFrom(rule.match, file));
    }
    return choice;
}

bool RuleChoice::asksForFlag(std::string_view name, const std::vector<Rule>& rules)
{
    return std::ranges::any_of(rules,
        [&](const Rule& each) { return each.isEnabled && Matcher::asksForFlag(each.match, name); });
}

}  // namespace tidemark
