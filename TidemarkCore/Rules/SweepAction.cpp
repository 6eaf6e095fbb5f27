#include "SweepAction.h"

#include "Overloaded.h"

namespace tidemark {

SweepAction SweepAction::move(FileURL to)
{
    return {Move{std::move(to)}};
}

SweepAction SweepAction::archive(FileURL to)
{
    return {Archive{std::move(to)}};
}

SweepAction SweepAction::trash()
{
    return {Trash{}};
}

SweepAction SweepAction::rename(std::string to)
{
    return {Rename{std::move(to)}};
}

SweepAction SweepAction::fileInto(FileURL folder, std::string renamedTo)
{
    return {FileInto{std::move(folder), std::move(renamedTo)}};
}

void SweepAction::encode(JSONEncoder& encoder) const
{
    const auto member = [&encoder](std::string_view name, auto members) {
        encoder.object([&] { encoder.memberObject(name, members); });
    };
    std::visit(
        Overloaded{
            [&](const Move& move) { member("move", [&] { encoder.member("to", move.to); }); },
            [&](const Archive& archive) {
                member("archive", [&] { encoder.member("to", archive.to); });
            },
            [&](const Trash&) { member("trash", [] {}); },
            [&](const Rename& rename) {
                member("rename", [&] { encoder.member("to", rename.to); });
            },
            [&](const FileInto& into) {
                member("fileInto", [&] {
                    encoder.member("folder", into.folder);
                    encoder.member("renamedTo", into.renamedTo);
                });
            },
        },
        value);
}

SweepAction SweepAction::decode(const JSONDecoder& decoder)
{
    const auto found = decoder.enumerationCase({"move", "archive", "trash", "rename", "fileInto"});
    const std::string_view name = found.first;
    const JSONDecoder& values = found.second;
    if (name == "move")
        return move(values["to"].fileURL());
    if (name == "archive")
        return archive(values["to"].fileURL());
    if (name == "trash")
        return trash();
    if (name == "rename")
        return rename(values["to"].string());
    return fileInto(values["folder"].fileURL(), values["renamedTo"].string());
}

}  // namespace tidemark
