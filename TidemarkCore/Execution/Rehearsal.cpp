#include "Rehearsal.h"

#include "Destination.h"
#include "ImaginedDisk.h"

#include <algorithm>

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
            outcome.deviation =
                std::make_unique<Deviation>(Deviation{std::current_exception(), {}});
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
        if (name == wanted->name) {
            disk.take(wanted->folder, wanted->name);
        } else {
            outcome.deviation = std::make_unique<Deviation>(Deviation{{}, std::move(name)});
            disk.take(wanted->folder, outcome.deviation->newName);
        }
    }
    disk.leave(action);
}

const PlannedAction& Rehearsal::planned(std::size_t index) const
{
    return m_plan.actions[m_outcomes[index].action];
}

std::size_t Rehearsal::obstacles() const
{
    return static_cast<std::size_t>(std::ranges::count_if(m_outcomes,
        [](const Outcome& outcome) { return outcome.deviation && outcome.deviation->obstacle; }));
}

RehearsedAction Rehearsal::operator[](std::size_t index) const
{
    const Deviation* deviation = m_outcomes[index].deviation.get();
    RehearsedAction result{planned(index), std::nullopt, deviation ? deviation->obstacle : nullptr};
    const auto wanted = Destination::of(result.planned);
    if (wanted && !result.obstacle) {
        const FileURL folder = FileURL::directory(std::string(wanted->folder));
        result.destination = folder.appending(deviation ? deviation->newName : wanted->name);
    }
    return result;
}

}  // namespace tidemark
