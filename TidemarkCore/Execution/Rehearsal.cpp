#include "Rehearsal.h"

#include "Destination.h"
#include "ImaginedDisk.h"

namespace tidemark {

/// The move would be refused: no file system of the kernel's takes longer names.
static void requireFittingName(const std::string& name)
{
    constexpr std::size_t longestName = 255;  // bytes
    if (name.size() > longestName)
        throw std::filesystem::filesystem_error(
            "cannot use the name", name, std::make_error_code(std::errc::filename_too_long));
}

Rehearsal::Rehearsal(SweepPlan plan, FileManager& fileManager, SweepObserver* observer)
    : m_plan(std::move(plan))
{
    ImaginedDisk disk(fileManager, m_plan);
    m_outcomes.reserve(m_plan.actions.size());
    for (std::size_t action = 0; action < m_plan.actions.size(); ++action) {
        if (observer != nullptr && observer->shouldStop())
            break;
        if (!disk.isThere(action))
            continue;
        Outcome& outcome = m_outcomes.emplace_back();
        outcome.action = static_cast<std::uint32_t>(action);
        try {
            rehearse(action, disk, outcome);
        } catch (const std::filesystem::filesystem_error&) {
            outcome.obstacle = std::current_exception();
        }
    }
}

void Rehearsal::rehearse(std::size_t action, ImaginedDisk& disk, Outcome& outcome) const
{
    const auto wanted = Destination::of(m_plan.actions[action]);
    if (wanted) {
        std::string name = wanted->prepare([&] { disk.makeFolder(wanted->folder); },
            [&](std::string_view candidate) { return disk.isTaken(wanted->folder, candidate); });
        requireFittingName(name);
        disk.take(wanted->folder, name);
        if (name != wanted->name)
            outcome.newName = std::move(name);
    }
    disk.leave(action);
}

RehearsedAction Rehearsal::operator[](std::size_t index) const
{
    const Outcome& outcome = m_outcomes[index];
    RehearsedAction result{m_plan.actions[outcome.action], std::nullopt, outcome.obstacle};
    const auto wanted = Destination::of(result.planned);
    if (wanted && !outcome.obstacle) {
        const FileURL folder = FileURL::directory(std::string(wanted->folder));
        result.destination =
            folder.appending(outcome.newName.empty() ? wanted->name : outcome.newName);
    }
    return result;
}

}  // namespace tidemark
