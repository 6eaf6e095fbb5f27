#include "SweepEngine.h"

#include "ComingOfAge.h"
#include "DirectoryScan.h"
#include "Planner.h"
#include "RuleChoice.h"
#include "StabilityGate.h"

#include <algorithm>
#include <iterator>

namespace tidemark {

static std::optional<Date> earlier(std::optional<Date> one, std::optional<Date> other)
{
    if (!one || !other)
        return one ? one : other;
    return std::min(*one, *other);
}

static void append(SweepPlan one, SweepPlan& joined)
{
    joined.comingOfAge = earlier(joined.comingOfAge, one.comingOfAge);
    if (joined.actions.empty())
        joined.actions = std::move(one.actions);
    else
        std::ranges::move(one.actions, std::back_inserter(joined.actions));
}

SweepEngine::SweepEngine(Executor executor, FileManager& fileManager)
    : m_executor(std::move(executor))
    , m_fileManager(&fileManager)
{
}

SweepRecord SweepEngine::sweep(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date startedAt, Date now, SweepObserver* observer)
{
    HeldFolders held(*m_fileManager);
    const SweepPlan joined = planAll(folders, gracePeriod, now, observer, &held);
    if (joined.actions.empty())
        return {.startedAt = startedAt, .entries = {}};
    return m_executor.apply(joined, held, startedAt, now, observer);
}

Rehearsal SweepEngine::rehearse(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date now, SweepObserver* observer)
{
    return {plan(folders, gracePeriod, now, observer), *m_fileManager, observer};
}

std::optional<Date> SweepEngine::nextSweepDue(const std::vector<WatchedFolder>& folders,
    Seconds gracePeriod, Date now, SweepObserver* observer)
{
    const SweepPlan joined = plan(folders, gracePeriod, now, observer);
    return joined.actions.empty() ? joined.comingOfAge : now;
}

SweepPlan SweepEngine::plan(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date now, SweepObserver* observer)
{
    return planAll(folders, gracePeriod, now, observer, nullptr);
}

/// `held` gets every folder before it is scanned, and lets go of those that nothing is taken out of.
SweepPlan SweepEngine::planAll(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date now, SweepObserver* observer, HeldFolders* held)
{
    SweepObserver nobody;
    SweepObserver& follower = observer != nullptr ? *observer : nobody;
    SweepPlan joined;
    for (const WatchedFolder& folder : folders) {
        if (follower.shouldStop())
            return {};
        const FileURL url = FileURL::directory(folder.path);
        follower.willScan(url);
        if (held != nullptr)
            held->find(url.path());
        const auto flagMatters = [&](std::string_view name) {
            return RuleChoice::asksForFlag(name, folder.rules);
        };
        SweepPlan ownPlan = plan(
            DirectoryScan::files(url, *m_fileManager, flagMatters), folder.rules, gracePeriod, now);
        if (held != nullptr && ownPlan.actions.empty())
            held->letGo(url.path());
        append(std::move(ownPlan), joined);
    }
    if (joined.comingOfAge)
        follower.willComeOfAge(*joined.comingOfAge);
    return joined;
}

SweepPlan SweepEngine::plan(
    std::vector<FileInfo> files, const std::vector<Rule>& rules, Seconds gracePeriod, Date now)
{
    Date earliest = never;
    std::erase_if(files, [&](const FileInfo& file) {
        if (StabilityGate::isStable(file, gracePeriod, now))
            return false;
        earliest = ComingOfAge::of(file, rules, gracePeriod, now, earliest).value_or(earliest);
        return true;
    });
    SweepPlan result = Planner::plan(std::move(files), rules, now);
    if (earliest < never)
        result.comingOfAge = earlier(result.comingOfAge, earliest);
    return result;
}

}  // namespace tidemark
