#pragma once

#include "FileManager.h"
#include "SweepObserver.h"
#include "SweepPlan.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

class ImaginedDisk;

/// What an action of a plan would come to. Valid as long as its Rehearsal.
struct RehearsedAction {
    const PlannedAction& planned;
    std::optional<FileURL> destination;  ///< Absent for a file that goes to the Trash.
    std::exception_ptr obstacle;  ///< Why the action would fail, as far as can be told; else null.
};

/// A plan, gone through without changing anything: the actions that Executor::apply would take, with the very
/// places it would choose. Names that earlier actions take or free are counted in; a file that an earlier
/// action moves away is left out.
class Rehearsal {
public:
    /// The plan's files are taken to exist: it has just been made from them. `observer` is only asked
    /// whether to stop; the actions from there on are left out. Never throws but for want of memory.
    Rehearsal(SweepPlan plan, FileManager& fileManager, SweepObserver* observer = nullptr);

    std::size_t size() const { return m_outcomes.size(); }
    RehearsedAction operator[](std::size_t index) const;

    /// The action without what it would come to, which takes longer to put together.
    const PlannedAction& planned(std::size_t index) const;

    /// How many of the actions would fail, as far as can be told.
    std::size_t obstacles() const;

private:
    /// What is not the rule.
    struct Deviation {
        std::exception_ptr obstacle;
        std::string newName;  // where the wanted one is taken
    };
    /// Small, since there is one for each file: places are put together when they are asked for.
    struct Outcome {
        std::uint32_t action = 0;  // its number in the plan
        std::unique_ptr<Deviation> deviation = nullptr;
    };

    void rehearse(std::size_t action, ImaginedDisk& disk, Outcome& outcome) const;

    SweepPlan m_plan;
    std::vector<Outcome> m_outcomes;
};

}  // namespace tidemark
