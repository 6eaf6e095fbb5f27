#include "Planner.h"

#include "DirectoryScan.h"
#include "RuleChoice.h"
#include "TimeZone.h"

#include <algorithm>

namespace tidemark::Planner {

namespace {

std::optional<Date> creationDateToStamp(const Rule& rule, const FileInfo& file)
{
    if (!rule.action.filesMarkdown() || !file.frontMatter)
        return std::nullopt;
    return file.frontMatter->createdDate();
}

}  // namespace

SweepPlan plan(std::vector<FileInfo> files, const std::vector<Rule>& rules, Date now)
{
    const TimeZone timeZone = TimeZone::current();
    SweepPlan result;
    result.actions.reserve(files.size());
    Date comingOfAge = never;
    for (FileInfo& file : files) {
        const RuleChoice choice = RuleChoice::of(file, rules, now);
        const Rule* rule = choice.rule;
        if (rule == nullptr) {
            comingOfAge = std::min(comingOfAge, choice.matchesFrom);
            continue;
        }
        SweepAction action = rule->action.resolve(file, now, timeZone);
        result.actions.push_back({
            .source = std::move(file.url),
            .ruleID = rule->id,
            .ruleName = rule->name,
            .action = std::move(action),
            .stampCreated = creationDateToStamp(*rule, file),
        });
    }
    if (comingOfAge < never)
        result.comingOfAge = comingOfAge;
    return result;
}

SweepPlan plan(
    const FileURL& directory, const std::vector<Rule>& rules, Date now, FileManager& fileManager)
{
    const auto flagMatters = [&](std::string_view name) {
        return RuleChoice::asksForFlag(name, rules);
    };
    return plan(DirectoryScan::files(directory, fileManager, flagMatters), rules, now);
}

}  // namespace tidemark::Planner
