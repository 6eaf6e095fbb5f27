#pragma once

#include "Date.h"
#include "WatchedFolder.h"

#include <string>
#include <vector>

namespace tidemark {

/// The user's configuration. A plain value; docs/formats.md describes its file.
struct Settings {
    std::vector<WatchedFolder> folders = {};
    std::string markdownSubfolder = "Notes";  ///< Inside each folder; empty: notes are not filed.
    Seconds gracePeriod{60};  ///< How long a file must have rested before it may be swept.
    bool isPaused = false;
    bool hasOnboarded = false;

    void encode(JSONEncoder& encoder) const;

    /// Every key may be missing. Files of earlier versions are upgraded: one list of rules for all folders,
    /// and the rule for screenshots that knew their name alone.
    static Settings decode(const JSONDecoder& decoder);

    bool operator==(const Settings&) const = default;
};

}  // namespace tidemark
