#pragma once

#include "Date.h"
#include "WatchBackend.h"

#include <optional>
#include <string>
#include <vector>

namespace tidemark {

enum class Command {
    status,
    preview,
    sweep,
    undo,
    activity,
    pause,
    resume,
    listFolders,
    addFolders,
    removeFolders,
    watch,
};

/// What the user asked for, read from the arguments and found to make sense. A plain value.
struct Invocation {
    /// Print the help or the version in place of running a command.
    enum class Mode { run, help, version };

    Mode mode = Mode::run;
    std::optional<Command> command = {};  ///< To be run, or what the help is asked about.
    std::optional<std::string> supportFolder = {};  ///< As given.
    bool json = false;
    std::optional<Date> now = {};
    int limit = 20;
    std::vector<std::string> paths = {};  ///< As given.
    std::optional<WatchBackend> watchBackend = {};

    bool operator==(const Invocation&) const = default;
};

}  // namespace tidemark
