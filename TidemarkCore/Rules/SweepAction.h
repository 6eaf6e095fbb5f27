#pragma once

#include "FileURL.h"
#include "JSONDecoder.h"
#include "JSONEncoder.h"

#include <string>
#include <variant>

namespace tidemark {

/// What is done to one file, with nothing left to decide but a free name. A plain value.
struct SweepAction {
    /// Into the folder `to`, the name kept.
    struct Move {
        FileURL to;
        bool operator==(const Move&) const = default;
    };
    /// The same as an archiving step.
    struct Archive {
        FileURL to;
        bool operator==(const Archive&) const = default;
    };
    /// To the user's Trash.
    struct Trash {
        bool operator==(const Trash&) const = default;
    };
    /// In place; `to` is the new file name.
    struct Rename {
        std::string to;
        bool operator==(const Rename&) const = default;
    };
    /// Into `folder` under the name `renamedTo`.
    struct FileInto {
        FileURL folder;
        std::string renamedTo;
        bool operator==(const FileInto&) const = default;
    };

    std::variant<Move, Archive, Trash, Rename, FileInto> value;

    static SweepAction move(FileURL to);
    static SweepAction archive(FileURL to);
    static SweepAction trash();
    static SweepAction rename(std::string to);
    static SweepAction fileInto(FileURL folder, std::string renamedTo);

    bool isTrash() const { return std::holds_alternative<Trash>(value); }

    /// An object with one key, the case's name in lower camel case, whose value holds the case's members.
    void encode(JSONEncoder& encoder) const;
    static SweepAction decode(const JSONDecoder& decoder);

    bool operator==(const SweepAction&) const = default;
};

}  // namespace tidemark
