#include "ChildProcess.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <system_error>
#include <utility>

namespace tidemark {

namespace {

constexpr unsigned nobody = 65534;
constexpr int threw = 99;

int resultOf(const std::function<int()>& body)
{
    try {
        return body();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "in the child process: %s\n", error.what());
        return threw;
    }
}

}  // namespace

ChildProcess::ChildProcess(const std::function<int()>& body)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error{systemError(errno), "cannot make a pipe"};
    m_end = FileDescriptor{ends[0]};
    const FileDescriptor alive{ends[1]};
    std::fflush(nullptr);
    m_process = ::fork();
    if (m_process < 0)
        throw std::system_error{systemError(errno), "cannot start a process"};
    if (m_process == 0)
        ::_exit(resultOf(body));
}

ChildProcess::~ChildProcess()
{
    kill();
}

int ChildProcess::wait()
{
    int status = 0;
    const pid_t process = std::exchange(m_process, -1);
    if (uninterrupted([&] { return ::waitpid(process, &status, 0); }) != process)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void ChildProcess::kill()
{
    if (m_process < 0)
        return;
    ::kill(m_process, SIGKILL);
    wait();
}

bool becomeOrdinaryUser()
{
    return ::setgroups(0, nullptr) == 0 && ::setresgid(nobody, nobody, nobody) == 0
        && ::setresuid(nobody, nobody, nobody) == 0;
}

}  // namespace tidemark
