#pragma once

#include "FileManager.h"
#include "JournalEntry.h"
#include "PlannedAction.h"

#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// Where an action wants its file, before a free name is looked for.
struct Destination {
    JournalEntry::Op op = JournalEntry::Op::move;
    FileURL folder;
    std::string name;

    /// Nothing for an action that trashes the file.
    static std::optional<Destination> of(const PlannedAction& action);

    /// Makes the folder and returns the first place in it that is free: `name`, or `name` with a counter
    /// from 2. Throws filesystem_error, invalid_argument when `name` cannot be a file's name.
    FileURL prepare(FileManager& fileManager) const;
};

}  // namespace tidemark
