#include "Destination.h"

#include "Overloaded.h"
#include "Text.h"
#include "UniqueName.h"

namespace tidemark {

std::optional<Destination> Destination::of(const PlannedAction& action)
{
    const auto [sourceFolder, sourceName] = at(action.source.path());
    return std::visit(
        Overloaded{
            [&, name = sourceName](const SweepAction::Move& move) -> std::optional<Destination> {
                return Destination{move.to.path(), name};
            },
            [&, name = sourceName](
                const SweepAction::Archive& archive) -> std::optional<Destination> {
                return Destination{archive.to.path(), name};
            },
            [](const SweepAction::Trash&) -> std::optional<Destination> { return std::nullopt; },
            [&, folder = sourceFolder](
                const SweepAction::Rename& rename) -> std::optional<Destination> {
                return Destination{folder, rename.to};
            },
            [](const SweepAction::FileInto& into) -> std::optional<Destination> {
                return Destination{into.folder.path(), into.renamedTo};
            },
        },
        action.action.value);
}

Destination Destination::at(std::string_view path)
{
    const std::size_t slash = path.rfind('/');
    return {slash == 0 ? path.substr(0, 1) : path.substr(0, slash), path.substr(slash + 1)};
}

HeldEntry Destination::prepare(HeldFolders& folders, TakenNames& taken) const
{
    const HeldFolder* held = nullptr;
    const std::string free = prepare([&] { held = &folders.make(folder); },
        [&](std::string_view candidate) { return taken.isTaken(*held, candidate); });
    return {*held, held->url().appending(free)};
}

std::string Destination::prepare(const std::function<void()>& makeFolder,
    const std::function<bool(std::string_view)>& isTaken) const
{
    if (!isFileName(name))
        throw std::filesystem::filesystem_error("cannot use the name", std::string(name),
            std::make_error_code(std::errc::invalid_argument));
    makeFolder();
    return UniqueName::firstFree(name, isTaken);
}

JournalEntry::Op opOf(const PlannedAction& action)
{
    using Op = JournalEntry::Op;
    return std::visit(Overloaded{
                          [](const SweepAction::Move&) { return Op::move; },
                          [](const SweepAction::Archive&) { return Op::archive; },
                          [](const SweepAction::Trash&) { return Op::trash; },
                          [](const SweepAction::Rename&) { return Op::rename; },
                          [](const SweepAction::FileInto&) { return Op::move; },
                      },
        action.action.value);
}

}  // namespace tidemark
