#include "ProcessFacts.h"

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tidemark::bench {

namespace {

std::filesystem::path folderOf(pid_t process)
{
    return std::filesystem::path("/proc") / std::to_string(process);
}

/// Files of lines such as "Rss:    1234 kB".
std::map<std::string, std::uint64_t> numbersIn(const std::filesystem::path& file)
{
    std::map<std::string, std::uint64_t> numbers;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t colon = line.find(':');
        const std::size_t digits = line.find_first_not_of(" \t", colon + 1);
        if (colon == std::string::npos || digits == std::string::npos
            || line.find_first_of("0123456789", digits) != digits)
            continue;
        numbers.emplace(line.substr(0, colon), std::stoull(line.substr(digits)));
    }
    return numbers;
}

std::uint64_t required(const std::map<std::string, std::uint64_t>& numbers, const std::string& name)
{
    const auto found = numbers.find(name);
    if (found == numbers.end())
        throw std::runtime_error("the kernel does not tell " + name + " of a process");
    return found->second;
}

}  // namespace

ProcessMemory ProcessMemory::of(pid_t process)
{
    const auto kibibytes = numbersIn(folderOf(process) / "smaps_rollup");
    return {.resident = required(kibibytes, "Rss") << 10U,
        .unshared = (required(kibibytes, "Private_Clean") + required(kibibytes, "Private_Dirty"))
            << 10U,
        .anonymous = required(kibibytes, "Anonymous") << 10U};
}

Seconds processorTimeOf(pid_t process)
{
    clockid_t clock = 0;
    if (const int error = ::clock_getcpuclockid(process, &clock))
        throw std::system_error(error, std::generic_category(), "processor time of a process");
    struct timespec time;
    if (::clock_gettime(clock, &time) != 0)
        throw std::system_error(errno, std::generic_category(), "processor time of a process");
    return Seconds(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9);
}

ContextSwitches ContextSwitches::of(pid_t process)
{
    ContextSwitches switches;
    for (const auto& thread : std::filesystem::directory_iterator(folderOf(process) / "task")) {
        const auto numbers = numbersIn(thread.path() / "status");
        switches.m_ofThread[static_cast<pid_t>(std::stol(thread.path().filename().string()))] =
            required(numbers, "voluntary_ctxt_switches")
            + required(numbers, "nonvoluntary_ctxt_switches");
    }
    return switches;
}

std::uint64_t ContextSwitches::since(const ContextSwitches& before) const
{
    std::uint64_t count = 0;
    for (const auto& [thread, switches] : m_ofThread) {
        const auto earlier = before.m_ofThread.find(thread);
        count += switches - (earlier == before.m_ofThread.end() ? 0 : earlier->second);
    }
    return count;
}

}  // namespace tidemark::bench
