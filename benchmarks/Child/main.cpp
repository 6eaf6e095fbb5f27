// What tidemark-bench starts as processes of their own:
//
//   tidemark-bench-child measure PROGRAM ARG...      runs a program with its standard output thrown away and
//                                                    prints wall seconds, CPU seconds and peak memory in KiB
//   tidemark-bench-child readdir-statx FOLDER        a bare walk over the folder
//
// A program's peak memory includes, for the kernel, that of the process that started it up to the exec; so a
// small one starts it.

#include "FolderWalk.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int exitFailed = 1;
constexpr int exitWrongUsage = 2;

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Starts a program with its standard output thrown away. Throws std::system_error.
pid_t start(char** arguments)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int error = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), arguments[0]);
    return process;
}

/// Waits until the process has ended; throws std::runtime_error unless it ended well.
rusage waitFor(pid_t process, const char* name)
{
    int status = 0;
    rusage usage{};
    while (::wait4(process, &status, 0, &usage) < 0) {
        if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), name);
    }
    if (status != 0)
        throw std::runtime_error(std::string(name) + " failed");
    return usage;
}

int measure(char** arguments)
{
    const Clock::time_point before = Clock::now();
    const rusage usage = waitFor(start(arguments), arguments[0]);
    const std::chrono::duration<double> wall = Clock::now() - before;
    std::printf("%.9f %.9f %ld\n", wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
        usage.ru_maxrss);
    return 0;
}

int run(int count, char** arguments)
{
    const std::string_view mode = count > 2 ? arguments[1] : "";
    if (mode == "measure")
        return measure(arguments + 2);
    if (mode == "readdir-statx" && count == 3) {
        const auto walk = tidemark::bench::FolderWalk::over(arguments[2]);
        std::printf("%llu files\n", static_cast<unsigned long long>(walk.files));
        return 0;
    }
    std::fputs(
        "usage: tidemark-bench-child measure PROGRAM ARG... | readdir-statx FOLDER\n", stderr);
    return exitWrongUsage;
}

}  // namespace

int main(int count, char** arguments)
{
    try {
        return run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tidemark-bench-child: %s\n", error.what());
        return exitFailed;
    }
}
