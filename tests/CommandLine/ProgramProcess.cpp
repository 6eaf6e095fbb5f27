#include "ProgramProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

namespace tidemark {

namespace {

class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void redirect(int stream, const std::string& file)
    {
        if (file.empty())
            ::posix_spawn_file_actions_addclose(&m_actions, stream);
        else
            ::posix_spawn_file_actions_addopen(
                &m_actions, stream, file.c_str(), O_RDWR | O_CREAT | O_NOCTTY, 0600);
    }
    void redirect(int stream, int descriptor)
    {
        ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, stream);
    }
    void changeFolder(const std::string& folder)
    {
        ::posix_spawn_file_actions_addchdir_np(&m_actions, folder.c_str());
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions = {};
};

/// A shell's background jobs, and what nohup(1) starts, ignore signals; what they start would too.
class UnignoredSignals {
public:
    UnignoredSignals()
    {
        sigset_t signals;
        ::sigemptyset(&signals);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
            ::sigaddset(&signals, number);
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~UnignoredSignals() { ::posix_spawnattr_destroy(&m_attributes); }
    UnignoredSignals(const UnignoredSignals&) = delete;
    UnignoredSignals& operator=(const UnignoredSignals&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

/// Limits the files that this process writes, and thus a child that it starts, until the end of the scope.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::optional<std::size_t> largestFile)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_previous);
        struct rlimit limit = m_previous;
        if (largestFile)
            limit.rlim_cur = *largestFile;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_previous); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    struct rlimit m_previous = {};
};

std::vector<std::string> environmentOf(const ProgramStart& start)
{
    std::vector<std::string> variables;
    for (const auto& [name, value] : start.environment) {
        std::string variable = name;
        variables.push_back(variable.append("=").append(value));
    }
    for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name))
            variables.push_back(std::string{name} + '=' + value);
    }
    return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ProgramProcess::ProgramProcess(const ProgramStart& start)
{
    std::vector<std::string> arguments = start.arguments;
    arguments.insert(arguments.begin(), start.path);
    std::vector<std::string> variables = environmentOf(start);

    FileActions actions;
    actions.redirect(STDIN_FILENO, "/dev/null");
    if (start.outputDescriptor >= 0)
        actions.redirect(STDOUT_FILENO, start.outputDescriptor);
    else
        actions.redirect(STDOUT_FILENO, start.outputFile);
    actions.redirect(STDERR_FILENO, start.errorFile);
    actions.changeFolder(start.workingFolder);
    const UnignoredSignals signals;
    const FileSizeLimit limit{start.largestFile};
    const int error = ::posix_spawn(&m_pid, start.path.c_str(), actions.get(), signals.get(),
        pointersTo(arguments).data(), pointersTo(variables).data());
    if (error != 0)
        throw std::system_error{error, std::generic_category(), "cannot start " + start.path};
}

ProgramProcess::~ProgramProcess()
{
    if (m_pid < 0)
        return;
    ::kill(m_pid, SIGKILL);
    wait();
}

void ProgramProcess::signal(int number) const
{
    ::kill(m_pid, number);
}

int ProgramProcess::wait()
{
    int status = 0;
    while (::waitpid(m_pid, &status, 0) < 0 && errno == EINTR) { }
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace tidemark
