#include "ProgramCopies.h"

#include <filesystem>
#include <stdexcept>

namespace tidemark::bench {

/// As the dynamic linker finds them, without itself, which runs from its own place always.
static std::set<std::string> librariesOf(const std::string& program)
{
    constexpr std::string_view beforePath = " => /";
    RunningProcess listing({program}, {"LD_TRACE_LOADED_OBJECTS=1"});
    std::set<std::string> libraries;
    for (const std::string& line : listing.remainingLines()) {
        const std::size_t arrow = line.find(beforePath);
        if (arrow == std::string::npos)
            continue;
        const std::size_t path = arrow + beforePath.size() - 1;
        libraries.insert(line.substr(path, line.rfind(" (") - path));
    }
    return libraries;
}

ProgramCopies::ProgramCopies(const Place& place, const std::vector<std::string>& programs)
    : m_folder(place.folder->url().appending("programs", FileURL::Kind::directory))
{
    std::filesystem::create_directories(m_folder.path());
    const std::set<std::string> libraries = librariesOf(programs.front());
    for (const std::string& program : programs) {
        if (librariesOf(program) != libraries)
            throw std::runtime_error("does not load the same libraries: " + program);
        copy(program);
    }
    for (const std::string& library : libraries)
        copy(library);
    // Pages that the disk still lacks count as written by whoever maps them.
    place.flush();
}

std::string ProgramCopies::copyOf(const std::string& file) const
{
    return m_folder.appending(std::filesystem::path(file).filename().string()).path();
}

void ProgramCopies::copy(const std::string& file) const
{
    std::filesystem::copy_file(
        file, copyOf(file), std::filesystem::copy_options::overwrite_existing);
}

std::unique_ptr<RunningProcess> ProgramCopies::start(const std::string& program,
    const std::vector<std::string>& arguments, std::vector<std::string> environment) const
{
    std::vector<std::string> all{copyOf(program)};
    all.insert(all.end(), arguments.begin(), arguments.end());
    environment.push_back("LD_LIBRARY_PATH=" + m_folder.path());
    return std::make_unique<RunningProcess>(std::move(all), environment);
}

}  // namespace tidemark::bench
