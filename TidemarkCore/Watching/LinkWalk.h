#pragma once

#include <functional>
#include <string>

namespace tidemark {

/// Follows an absolute path through its links, one look-up at a time.
namespace LinkWalk {

struct Result {
    std::string path;  ///< Without links. As far as it exists, when there is an error.
    int error = 0;  ///< The errno of the look-up that failed.
    std::string missing;  ///< The name that was looked up then.

    bool operator==(const Result&) const = default;
};

enum class Entry { link, other };

/// Called for every look-up that found something, with the folder, which is free of links, and the name in it.
using Step = std::function<void(const std::string& folder, const std::string& name, Entry entry)>;

/// The folder that holds `path`, which is free of links; the root's is the root.
std::string parentOf(const std::string& path);

/// The path of an entry.
std::string entryIn(const std::string& folder, const std::string& name);

Result follow(const std::string& path, const Step& onStep);

}  // namespace LinkWalk

}  // namespace tidemark
