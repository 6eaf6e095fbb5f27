#pragma once

#include "Executor.h"
#include "InMemoryFileManager.h"

#include <string>
#include <utility>

namespace tidemark {

inline const FileURL journalURL{"/support/journal.json"};
inline const Date sweepTime{Seconds(1714745100)};

/// A plan's action of an unnamed rule.
inline PlannedAction planned(const std::string& source, SweepAction action)
{
    return {.source = FileURL(source),
        .ruleID = {},
        .ruleName = "rule",
        .action = std::move(action),
        .stampCreated = std::nullopt};
}

inline PlannedAction moving(const std::string& source, const std::string& folder)
{
    return planned(source, SweepAction::move(FileURL::directory(folder)));
}

inline JournalEntry entry(JournalEntry::Op op, const std::string& from, const std::string& to)
{
    return {.op = op, .from = from, .to = to, .at = sweepTime};
}

inline JournalStore journalOn(FileManager& disk)
{
    return {journalURL, disk};
}

inline Executor executorOn(FileManager& disk)
{
    return {journalOn(disk), disk};
}

inline SweepRecord sweep(FileManager& disk, std::vector<PlannedAction> actions)
{
    return executorOn(disk).apply({std::move(actions)}, sweepTime, sweepTime);
}

}  // namespace tidemark
