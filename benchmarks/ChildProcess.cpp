#include "ChildProcess.h"

#include "Pipe.h"
#include "SystemCall.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <stdexcept>

namespace tidemark::bench::ChildProcess {

namespace {

/// Starts a program whose standard output goes to `output`.
pid_t start(std::vector<std::string> arguments, int output)
{
    std::vector<char*> pointers;
    std::ranges::transform(
        arguments, std::back_inserter(pointers), [](std::string& each) { return each.data(); });
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t process = -1;
    const int error =
        ::posix_spawnp(&process, pointers[0], &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(systemError(error), arguments.front());
    return process;
}

std::string readAll(int descriptor)
{
    std::string text;
    std::array<char, 256> buffer{};
    for (;;) {
        const ssize_t size =
            uninterrupted([&] { return ::read(descriptor, buffer.data(), buffer.size()); });
        if (size <= 0)
            return text;
        text.append(buffer.data(), static_cast<std::size_t>(size));
    }
}

Measured parse(const std::string& line)
{
    double wall = 0;
    double cpu = 0;
    std::size_t peakKiB = 0;
    if (std::sscanf(line.c_str(), "%lf %lf %zu", &wall, &cpu, &peakKiB) != 3)
        throw std::runtime_error("tidemark-bench-child measured nothing: " + line);
    return {.wall = Seconds(wall), .cpu = Seconds(cpu), .peakBytes = peakKiB << 10U};
}

}  // namespace

Measured measure(const std::vector<std::string>& arguments)
{
    std::vector<std::string> all{TIDEMARK_BENCH_CHILD_PROGRAM, "measure"};
    all.insert(all.end(), arguments.begin(), arguments.end());

    Pipe pipe = Pipe::make();
    const pid_t process = start(std::move(all), pipe.writeEnd.get());
    pipe.writeEnd.close();
    const std::string line = readAll(pipe.readEnd.get());
    int status = 0;
    uninterrupted([&] { return ::waitpid(process, &status, 0); });
    if (status != 0)
        throw std::runtime_error("failed: " + arguments.front());
    return parse(line);
}

}  // namespace tidemark::bench::ChildProcess
