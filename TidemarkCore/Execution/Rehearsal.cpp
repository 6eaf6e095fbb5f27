#include "Rehearsal.h"

#include "Destination.h"
#include "ImaginedFileManager.h"

namespace tidemark::Rehearsal {

namespace {

std::optional<FileURL> perform(const PlannedAction& action, ImaginedFileManager& disk)
{
    const auto wanted = Destination::of(action);
    if (!wanted) {
        disk.trashItem(action.source);
        return std::nullopt;
    }
    FileURL place = wanted->prepare(disk);
    disk.moveItem(action.source, place);
    return place;
}

}  // namespace

std::vector<RehearsedAction> rehearse(SweepPlan plan, FileManager& fileManager)
{
    ImaginedFileManager disk(fileManager);
    std::vector<RehearsedAction> result;
    result.reserve(plan.actions.size());
    for (PlannedAction& action : plan.actions) {
        RehearsedAction rehearsed;
        try {
            if (!disk.fileExists(action.source))
                continue;
            rehearsed.destination = perform(action, disk);
        } catch (const std::filesystem::filesystem_error& error) {
            rehearsed.obstacle = error.code().message();
        }
        rehearsed.planned = std::move(action);
        result.push_back(std::move(rehearsed));
    }
    return result;
}

}  // namespace tidemark::Rehearsal
