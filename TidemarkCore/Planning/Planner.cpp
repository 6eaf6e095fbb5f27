#include "Planner.h"

#include "DirectoryScan.h"
#include "Matcher.h"
#include "TimeZone.h"

#include <algorithm>

namespace tidemark::Planner {

namespace {

const Rule* firstMatchingRule(const std::vector<Rule>& rules, const FileInfo& file, Date now)
{
    const auto found = std::ranges::find_if(rules, [&](const Rule& rule) {
        return rule.isEnabled && Matcher::matches(rule.match, file, now);
    });
    return found == rules.end() ? nullptr : &*found;
}

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
    for (FileInfo& file : files) {
        const Rule* rule = firstMatchingRule(rules, file, now);
        if (rule == nullptr)
            continue;
        SweepAction action = rule->action.resolve(file, now, timeZone);
        result.actions.push_back({
            .source = std::move(file.url),
            .ruleID = rule->id,
            .ruleName = rule->name,
            .action = std::move(action),
            .stampCreated = creationDateToStamp(*rule, file),
        });
    }
    return result;
}

SweepPlan plan(
    const FileURL& directory, const std::vector<Rule>& rules, Date now, FileManager& fileManager)
{
    return plan(DirectoryScan::files(directory, fileManager), rules, now);
}

}  // namespace tidemark::Planner
