#pragma once

#include "Rule.h"
#include "TracedCall.h"

#include <string>
#include <vector>

namespace tidemark {

/// Files, and rules that move all but the bystanders of them. A plain value.
///
/// Paths are relative to a test's own place: "home" is the user's home folder, "disk" another file system
/// where there is one. The folders "home/in", "home/more" and "disk/in" are watched if they hold a file.
struct Scenario {
    std::string name;
    std::vector<std::string> files;
    std::vector<std::string> bystanders = {};  ///< They stay where they are, whatever happens.
    std::vector<Rule> (*rules)(const std::string& place) = nullptr;
    bool needsDisk = false;
    bool hasNoTrashOnDisk = false;
    bool sortsMarkdown = false;
    int (*refuses)(
        const TracedCall& call) = nullptr;  ///< The errno by which a call is never offered, or 0.
    std::string command = "sweep";
    bool startsSwept = false;  ///< The files have been moved already.

    /// The same files, and the undo of their sweep.
    Scenario undone() const;
};

/// Every kind of action, each way of moving, and the undo of all.
std::vector<Scenario> everyScenario();

std::ostream& operator<<(std::ostream& stream, const Scenario& scenario);

}  // namespace tidemark
