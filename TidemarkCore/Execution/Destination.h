#pragma once

#include "HeldFolders.h"
#include "JournalEntry.h"
#include "PlannedAction.h"
#include "TakenNames.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// Where a file is wanted, before a free name is looked for. Valid as long as what it was made from.
struct Destination {
    std::string_view folder;  ///< A path.
    std::string_view name;

    /// Nothing for an action that trashes the file.
    static std::optional<Destination> of(const PlannedAction& action);

    /// The very place at `path`, which is absolute.
    static Destination at(std::string_view path);

    /// Makes the folder and returns the first place in it that is free: `name`, or `name` with a counter
    /// from 2. Throws filesystem_error, invalid_argument when `name` cannot be a file's name.
    HeldEntry prepare(HeldFolders& folders, TakenNames& taken) const;

    /// The same with other means. `makeFolder` makes `folder`; `isTaken` tells whether something stands at
    /// a name in it. Returns the name. What they throw passes through.
    std::string prepare(const std::function<void()>& makeFolder,
        const std::function<bool(std::string_view)>& isTaken) const;
};

/// What the journal calls an action.
JournalEntry::Op opOf(const PlannedAction& action);

}  // namespace tidemark
