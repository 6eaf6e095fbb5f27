#include "SweepEngine.h"

#include "DirectoryScan.h"
#include "Planner.h"
#include "StabilityGate.h"

#include <algorithm>
#include <iterator>

namespace tidemark {

SweepEngine::SweepEngine(Executor executor, FileManager& fileManager)
    : m_executor(std::move(executor))
    , m_fileManager(&fileManager)
{
}

SweepRecord SweepEngine::sweep(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date startedAt, Date now, SweepObserver* observer)
{
    const SweepPlan joined = plan(folders, gracePeriod, now, observer);
    if (joined.actions.empty())
        return {.startedAt = startedAt, .entries = {}};
    return m_executor.apply(joined, startedAt, now, observer);
}

Rehearsal SweepEngine::rehearse(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date now, SweepObserver* observer)
{
    return {plan(folders, gracePeriod, now, observer), *m_fileManager};
}

SweepPlan SweepEngine::plan(const std::vector<WatchedFolder>& folders, Seconds gracePeriod,
    Date now, SweepObserver* observer)
{
    SweepPlan joined;
    for (const WatchedFolder& folder : folders) {
        const FileURL url = FileURL::directory(folder.path);
        if (observer != nullptr)
            observer->willScan(url);
        SweepPlan one =
            plan(DirectoryScan::files(url, *m_fileManager), folder.rules, gracePeriod, now);
        if (joined.actions.empty())
            joined = std::move(one);
        else
            std::ranges::move(one.actions, std::back_inserter(joined.actions));
    }
    return joined;
}

SweepPlan SweepEngine::plan(
    std::vector<FileInfo> files, const std::vector<Rule>& rules, Seconds gracePeriod, Date now)
{
    std::erase_if(files,
        [&](const FileInfo& file) { return !StabilityGate::isStable(file, gracePeriod, now); });
    return Planner::plan(std::move(files), rules, now);
}

}  // namespace tidemark
