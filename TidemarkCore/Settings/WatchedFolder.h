#pragma once

#include "Rule.h"

#include <string>
#include <vector>

namespace tidemark {

/// A folder that is kept tidy, with its own rules. A plain value.
struct WatchedFolder {
    std::string path = {};  ///< Absolute.
    std::vector<Rule> rules = {};  ///< In the user's order; the first that matches a file acts.
    bool sortsMarkdown = true;  ///< Markdown notes are filed, too.

    void encode(JSONEncoder& encoder) const;

    /// Drops rules that file Markdown notes: `sortsMarkdown` has taken their place.
    static WatchedFolder decode(const JSONDecoder& decoder);

    bool operator==(const WatchedFolder&) const = default;
};

}  // namespace tidemark
