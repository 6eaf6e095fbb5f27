#include "Destination.h"

#include "Overloaded.h"
#include "Text.h"
#include "UniqueName.h"

namespace tidemark {

std::optional<Destination> Destination::of(const PlannedAction& action)
{
    using Op = JournalEntry::Op;
    const FileURL& source = action.source;
    const std::string sourceName(source.lastPathComponent());
    return std::visit(
        Overloaded{
            [&](const SweepAction::Move& move) -> std::optional<Destination> {
                return Destination{Op::move, move.to, sourceName};
            },
            [&](const SweepAction::Archive& archive) -> std::optional<Destination> {
                return Destination{Op::archive, archive.to, sourceName};
            },
            [](const SweepAction::Trash&) -> std::optional<Destination> { return std::nullopt; },
            [&](const SweepAction::Rename& rename) -> std::optional<Destination> {
                return Destination{Op::rename, source.parent(), rename.to};
            },
            [](const SweepAction::FileInto& into) -> std::optional<Destination> {
                return Destination{Op::move, into.folder, into.renamedTo};
            },
        },
        action.action.value);
}

FileURL Destination::prepare(FileManager& fileManager) const
{
    if (!isFileName(name))
        throw std::filesystem::filesystem_error("not a file name", folder.path(), name,
            std::make_error_code(std::errc::invalid_argument));
    fileManager.createDirectory(folder);
    return UniqueName::firstFree(
        folder, name, [&](const FileURL& place) { return fileManager.fileExists(place); });
}

}  // namespace tidemark
