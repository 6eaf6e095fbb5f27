#include "RunningProcess.h"

#include "Pipe.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <iterator>
#include <stdexcept>

namespace tidemark::bench {

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    std::ranges::transform(
        texts, std::back_inserter(pointers), [](std::string& each) { return each.data(); });
    pointers.push_back(nullptr);
    return pointers;
}

std::string_view nameOf(std::string_view variable)
{
    return variable.substr(0, variable.find('='));
}

std::vector<std::string> environmentWith(const std::vector<std::string>& own)
{
    std::vector<std::string> all = own;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view inherited = *variable;
        if (std::ranges::none_of(
                own, [&](const std::string& each) { return nameOf(each) == nameOf(inherited); }))
            all.emplace_back(inherited);
    }
    return all;
}

}  // namespace

RunningProcess::RunningProcess(
    std::vector<std::string> arguments, const std::vector<std::string>& environment)
{
    Pipe pipe = Pipe::make();
    std::vector<std::string> variables = environmentWith(environment);
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> variablePointers = pointersTo(variables);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, pipe.writeEnd.get(), STDOUT_FILENO);
    const int error = ::posix_spawn(&m_process, argumentPointers[0], &actions, nullptr,
        argumentPointers.data(), variablePointers.data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(systemError(error), arguments.front());
    m_output = std::move(pipe.readEnd);
}

RunningProcess::~RunningProcess()
{
    ::kill(m_process, SIGTERM);
    int status = 0;
    uninterrupted([&] { return ::waitpid(m_process, &status, 0); });
}

std::optional<std::string> RunningProcess::nextLine()
{
    constexpr int patience = 120'000;
    for (;;) {
        if (const std::size_t end = m_read.find('\n'); end != std::string::npos) {
            std::string line = m_read.substr(0, end);
            m_read.erase(0, end + 1);
            return line;
        }
        struct pollfd output {
            m_output.get(), POLLIN, 0
        };
        if (uninterrupted([&] { return ::poll(&output, 1, patience); }) <= 0)
            throw std::runtime_error("a program that was started says nothing any more");
        std::array<char, 4096> buffer{};
        const ssize_t size =
            uninterrupted([&] { return ::read(m_output.get(), buffer.data(), buffer.size()); });
        if (size <= 0)
            return std::nullopt;
        m_read.append(buffer.data(), static_cast<std::size_t>(size));
    }
}

std::string RunningProcess::waitForLine(std::string_view text)
{
    while (auto line = nextLine()) {
        if (line->find(text) != std::string::npos)
            return *line;
    }
    throw std::runtime_error("a program has ended before it said: " + std::string(text));
}

std::vector<std::string> RunningProcess::remainingLines()
{
    std::vector<std::string> lines;
    while (auto line = nextLine())
        lines.push_back(std::move(*line));
    return lines;
}

}  // namespace tidemark::bench
