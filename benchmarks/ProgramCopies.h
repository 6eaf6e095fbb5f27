#pragma once

#include "Place.h"
#include "RunningProcess.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tidemark::bench {

/// Copies of programs and of the libraries that they load, all in one folder.
///
/// Nobody else runs these, so a program that runs alone shares no page of them with any process, whatever else
/// the machine is doing.
class ProgramCopies {
public:
    /// Throws filesystem_error; runtime_error unless all programs load the same libraries.
    ProgramCopies(const Place& place, const std::vector<std::string>& programs);

    /// Starts the copy of the program of this path.
    std::unique_ptr<RunningProcess> start(const std::string& program,
        const std::vector<std::string>& arguments, std::vector<std::string> environment) const;

private:
    std::string copyOf(const std::string& file) const;
    void copy(const std::string& file) const;

    FileURL m_folder;
};

}  // namespace tidemark::bench
