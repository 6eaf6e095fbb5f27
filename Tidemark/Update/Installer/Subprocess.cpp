#include "Subprocess.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <iterator>

namespace tidemark::Subprocess {

namespace {

void require(int result)
{
    if (result != 0)
        throw std::system_error{systemError(result)};
}

class FileActions {
public:
    FileActions()
    {
        require(::posix_spawn_file_actions_init(&m_actions));
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            require(::posix_spawn_file_actions_addopen(&m_actions, stream, "/dev/null", O_RDWR, 0));
        require(::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }

    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions = {};
};

class Attributes {
public:
    explicit Attributes(Session session)
    {
        require(::posix_spawnattr_init(&m_attributes));
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        // The application waits for signals by blocking them, and a blocked signal would stay blocked.
        require(::posix_spawnattr_setsigmask(&m_attributes, &none));
        require(::posix_spawnattr_setsigdefault(&m_attributes, &all));
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        if (session == Session::own)
            flags |= POSIX_SPAWN_SETSID;
        require(::posix_spawnattr_setflags(&m_attributes, static_cast<short>(flags)));
    }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }

    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

FileDescriptor handleOf(pid_t process)
{
    // By the number of the call: the header of glibc 2.36 declares the function for C only.
    return FileDescriptor{static_cast<int>(::syscall(SYS_pidfd_open, process, 0U))};
}

/// The exit status of a process that has ended or is about to; -1 when a signal ended it.
int reap(pid_t process)
{
    int status = 0;
    if (uninterrupted([&] { return ::waitpid(process, &status, 0); }) != process)
        throw std::system_error{systemError(errno)};
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// As the kernel shows it: each argument is followed by a NUL.
std::string commandOf(pid_t process)
{
    std::ifstream file{"/proc/" + std::to_string(process) + "/cmdline", std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::string joined(const std::vector<std::string>& command)
{
    std::string text;
    for (const std::string& argument : command)
        text.append(argument).push_back('\0');
    return text;
}

}  // namespace

pid_t start(const std::vector<std::string>& command, Session session)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& each : command)
        arguments.push_back(const_cast<char*>(each.c_str()));
    arguments.push_back(nullptr);

    const FileActions actions;
    const Attributes attributes{session};
    pid_t process = -1;
    const int result = ::posix_spawnp(&process, command.front().c_str(), actions.get(),
        attributes.get(), arguments.data(), environ);
    if (result != 0)
        throw std::system_error{systemError(result), "cannot start " + command.front()};
    return process;
}

int wait(pid_t process, int stop, int seconds)
{
    constexpr int milliseconds = 1000;
    const FileDescriptor end = handleOf(process);
    if (end.isOpen()) {
        std::array<pollfd, 2> both{pollfd{.fd = end.get(), .events = POLLIN, .revents = 0},
            pollfd{.fd = stop, .events = POLLIN, .revents = 0}};
        uninterrupted([&] {
            return ::poll(both.data(), both.size(), seconds > 0 ? seconds * milliseconds : -1);
        });
        if (both[0].revents == 0)
            ::kill(process, SIGKILL);
    }
    return reap(process);
}

bool becomes(pid_t process, const std::vector<std::string>& command, int seconds)
{
    constexpr int pause = 10;  // milliseconds; nothing tells of it
    constexpr int pausesPerSecond = 1000 / pause;
    const std::string wanted = joined(command);
    const FileDescriptor end = handleOf(process);
    for (int left = seconds * pausesPerSecond; left > 0; --left) {
        if (commandOf(process) == wanted)
            return true;
        pollfd hasEnded{.fd = end.get(), .events = POLLIN, .revents = 0};
        if (::poll(&hasEnded, 1, pause) > 0)
            break;
    }
    ::kill(process, SIGKILL);
    reap(process);
    return false;
}

}  // namespace tidemark::Subprocess
