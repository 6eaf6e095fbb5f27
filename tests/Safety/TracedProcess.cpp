#include "TracedProcess.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace tidemark {

#ifdef __x86_64__

namespace {

namespace fs = std::filesystem;

/// More calls than any test's program makes: one that tries the same call forever.
constexpr std::size_t mostCalls = 50'000;
constexpr unsigned longestSeconds = 60;
constexpr std::size_t mostDataKept = std::size_t{1} << 20;

[[noreturn]] void fail(const char* what)
{
    throw std::system_error{errno, std::generic_category(), what};
}

/// Stops the program at the calls of the table and at no others.
std::vector<sock_filter> callFilter()
{
    std::vector<sock_filter> filter;
    filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    for (const TracedCallShape& shape : tracedCallShapes()) {
        const auto number = static_cast<unsigned>(shape.number);
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return filter;
}

class Stream {
public:
    Stream()
        : m_file(std::tmpfile())
    {
        if (m_file == nullptr)
            fail("cannot make a file for what the program prints");
    }
    ~Stream() { std::fclose(m_file); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    int descriptor() const { return ::fileno(m_file); }
    std::string content() const
    {
        std::string text(static_cast<std::size_t>(::lseek(descriptor(), 0, SEEK_END)), '\0');
        const ssize_t size = ::pread(descriptor(), text.data(), text.size(), 0);
        text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        return text;
    }

private:
    std::FILE* m_file;
};

/// Has a blocked waitpid return when the time is over.
class TimeLimit {
public:
    TimeLimit()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &action, &m_previous);
        ::alarm(longestSeconds);
    }
    ~TimeLimit()
    {
        ::alarm(0);
        ::sigaction(SIGALRM, &m_previous, nullptr);
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

private:
    struct sigaction m_previous = {};
};

/// A program that is stopped at its calls.
class Trace {
public:
    using Judge = std::function<CallVerdict(const TracedCall&)>;

    Trace(const std::vector<std::string>& roots, const Judge& judge)
        : m_roots(roots)
        , m_judge(judge)
    {
    }

    ~Trace()
    {
        if (m_process > 0 && !m_hasEnded) {
            ::kill(m_process, SIGKILL);
            while (::waitpid(m_process, nullptr, __WALL) < 0 && errno == EINTR) { }
        }
    }

    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    TracedOutcome run(
        std::vector<std::string> command, const std::map<std::string, std::string>& environment)
    {
        const TimeLimit limit;
        start(std::move(command), environment);
        while (!m_hasEnded)
            step();
        m_outcome.output = m_output.content();
        m_outcome.error = m_error.content();
        return std::move(m_outcome);
    }

private:
    /// What one thread is in the middle of.
    struct Thread {
        std::optional<TracedCall> call;
        CallVerdict verdict;
        bool hasStarted = false;
    };

    void start(
        std::vector<std::string> command, const std::map<std::string, std::string>& environment)
    {
        std::vector<std::string> variables;
        variables.reserve(environment.size());
        for (const auto& [name, value] : environment)
            variables.push_back(std::string{name}.append("=").append(value));
        std::vector<char*> arguments = pointersTo(command);
        std::vector<char*> variablePointers = pointersTo(variables);
        std::vector<sock_filter> filter = callFilter();
        const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};

        std::fflush(nullptr);
        m_process = ::fork();
        if (m_process < 0)
            fail("cannot fork");
        if (m_process == 0)
            become(arguments, variablePointers, program);

        int status = 0;
        if (::waitpid(m_process, &status, __WALL) != m_process || !WIFSTOPPED(status))
            throw std::runtime_error{"the program to trace did not start"};
        constexpr unsigned long options = PTRACE_O_EXITKILL | PTRACE_O_TRACESECCOMP
            | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC
            | PTRACE_O_TRACESYSGOOD;
        if (::ptrace(PTRACE_SETOPTIONS, m_process, nullptr, options) != 0)
            fail("cannot trace");
        m_threads[m_process].hasStarted = true;
        proceed(m_process, PTRACE_CONT, 0);
    }

    static std::vector<char*> pointersTo(std::vector<std::string>& texts)
    {
        std::vector<char*> pointers(texts.size() + 1, nullptr);
        std::ranges::transform(
            texts, pointers.begin(), [](std::string& text) { return text.data(); });
        return pointers;
    }

    /// In the child, where only simple calls are safe.
    [[noreturn]] void become(const std::vector<char*>& arguments,
        const std::vector<char*>& variables, const sock_fprog& filter) const
    {
        constexpr int cannotStart = 126;
        const int nothing = ::open("/dev/null", O_RDONLY);
        ::dup2(nothing, STDIN_FILENO);
        ::dup2(m_output.descriptor(), STDOUT_FILENO);
        ::dup2(m_error.descriptor(), STDERR_FILENO);
        ::close_range(STDERR_FILENO + 1, ~0U, 0);
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(cannotStart);
        ::raise(SIGSTOP);
        if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0
            || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
            ::_exit(cannotStart);
        ::execve(arguments.front(), arguments.data(), variables.data());
        ::_exit(cannotStart);
    }

    void step()
    {
        int status = 0;
        const pid_t thread = ::waitpid(-1, &status, __WALL);
        if (thread < 0)
            return giveUp();
        if (WIFSTOPPED(status))
            return stopped(thread, WSTOPSIG(status), status >> 16);
        m_threads.erase(thread);
        if (thread != m_process)
            return;
        m_hasEnded = true;
        m_outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    void giveUp()
    {
        if (errno != EINTR)
            fail("cannot wait for the traced program");
        m_outcome.didHang = true;
        ::kill(m_process, SIGKILL);
    }

    void stopped(pid_t thread, int signal, int event)
    {
        Thread& state = m_threads[thread];
        if (event == PTRACE_EVENT_SECCOMP)
            return enter(thread, state);
        if (signal == (SIGTRAP | 0x80))
            return leave(thread, state);
        // A new thread begins with a stop that is not for it.
        const bool isNotForIt = event != 0 || (signal == SIGSTOP && !state.hasStarted);
        state.hasStarted = true;
        proceed(thread, PTRACE_CONT, isNotForIt ? 0 : signal);
    }

    void enter(pid_t thread, Thread& state)
    {
        state.hasStarted = true;
        user_regs_struct registers = {};
        if (::ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0)
            return;
        std::optional<TracedCall> call = decode(thread, registers);
        if (!call)
            return proceed(thread, PTRACE_CONT, 0);
        if (m_outcome.calls.size() >= mostCalls) {
            m_outcome.didHang = true;
            ::kill(m_process, SIGKILL);
            return;
        }
        state.verdict = m_judge(*call);
        state.call = std::move(call);
        carryOut(thread, state, registers);
    }

    void carryOut(pid_t thread, Thread& state, user_regs_struct& registers)
    {
        switch (state.verdict.kind) {
        case CallVerdict::Kind::killBefore:
            m_outcome.calls.push_back(*state.call);
            ::kill(m_process, SIGKILL);
            return;
        case CallVerdict::Kind::fail:
            // A descriptor is closed whatever close(2) returns; only the result is replaced, afterwards.
            if (state.call->kind == TracedCall::Kind::close)
                break;
            registers.orig_rax = static_cast<unsigned long long>(-1);
            registers.rax = static_cast<unsigned long long>(-state.verdict.error);
            ::ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
            break;
        case CallVerdict::Kind::shorten:
            shorten(thread, *state.call, registers);
            break;
        default:
            break;
        }
        proceed(thread, PTRACE_SYSCALL, 0);
    }

    void shorten(pid_t thread, TracedCall& call, user_regs_struct& registers) const
    {
        const std::size_t half = call.data.size() / 2;
        if (half == 0)
            return;
        if (call.name.ends_with('v')) {
            // As a write of the first part alone, or of half of it where there is one part only.
            const auto first = readObject<iovec>(thread, registers.rsi);
            registers.orig_rax = call.name == "writev" ? SYS_write : SYS_pwrite64;
            registers.rsi = reinterpret_cast<unsigned long long>(first.iov_base);
            registers.rdx = std::min(first.iov_len, half);
        } else {
            registers.rdx = half;
        }
        call.data.resize(registers.rdx);
        ::ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
    }

    void leave(pid_t thread, Thread& state)
    {
        user_regs_struct registers = {};
        if (state.call && ::ptrace(PTRACE_GETREGS, thread, nullptr, &registers) == 0) {
            if (state.verdict.kind == CallVerdict::Kind::fail
                && state.call->kind == TracedCall::Kind::close) {
                registers.rax = static_cast<unsigned long long>(-state.verdict.error);
                ::ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
            }
            state.call->result = static_cast<long>(registers.rax);
            m_outcome.calls.push_back(std::move(*state.call));
            state.call.reset();
            if (state.verdict.kind == CallVerdict::Kind::killAfter) {
                ::kill(m_process, SIGKILL);
                return;
            }
        }
        proceed(thread, PTRACE_CONT, 0);
    }

    /// A thread that has been killed meanwhile cannot go on, and its end is told by the next wait.
    static void proceed(pid_t thread, int request, int signal)
    {
        ::ptrace(static_cast<__ptrace_request>(request), thread, nullptr, signal);
    }

    /// Nothing for a call that is about something else.
    std::optional<TracedCall> decode(pid_t thread, const user_regs_struct& registers) const
    {
        const auto shape = std::ranges::find(
            tracedCallShapes(), static_cast<long>(registers.orig_rax), &TracedCallShape::number);
        if (shape == tracedCallShapes().end())
            return std::nullopt;
        const std::array<unsigned long long, 6> arguments = {
            registers.rdi, registers.rsi, registers.rdx, registers.r10, registers.r8, registers.r9};
        TracedCall call{.name = shape->name, .kind = shape->kind};
        if (shape->descriptor >= 0) {
            call.descriptor =
                static_cast<int>(arguments[static_cast<std::size_t>(shape->descriptor)]);
            call.path = pathOfDescriptor(call.descriptor);
        } else {
            call.path = pathArgument(thread, arguments, shape->folder, shape->path);
        }
        if (shape->otherPath >= 0)
            call.otherPath = pathArgument(thread, arguments, shape->otherFolder, shape->otherPath);
        if (!isInside(call.path) && !isInside(call.otherPath))
            return std::nullopt;
        if (shape->folder >= 0 && arguments[static_cast<std::size_t>(shape->path)] == 0)
            call.descriptor = static_cast<int>(arguments[static_cast<std::size_t>(shape->folder)]);
        if (call.kind == TracedCall::Kind::link)
            call.descriptor =
                ownDescriptor(readText(thread, arguments[static_cast<std::size_t>(shape->path)]));
        addDetails(thread, arguments, call);
        return call;
    }

    void addDetails(
        pid_t thread, const std::array<unsigned long long, 6>& arguments, TracedCall& call) const
    {
        if (call.kind == TracedCall::Kind::open) {
            call.flags = static_cast<int>(arguments[call.name == "open" ? 1 : 2]);
            const bool makes =
                (call.flags & (O_CREAT | O_TRUNC)) != 0 || (call.flags & O_TMPFILE) == O_TMPFILE;
            if (makes)
                call.kind = TracedCall::Kind::create;
        } else if (call.name == "ioctl") {
            if (arguments[1] == FICLONE || arguments[1] == FICLONERANGE)
                call.kind = TracedCall::Kind::clone;
        } else if (call.name == "unlinkat") {
            if ((arguments[2] & AT_REMOVEDIR) != 0)
                call.kind = TracedCall::Kind::removeFolder;
        } else if (call.kind == TracedCall::Kind::truncate) {
            call.offset = static_cast<std::int64_t>(arguments[1]);
        } else if (call.kind == TracedCall::Kind::write) {
            call.data = dataOfWrite(thread, call.name.ends_with('v'), arguments);
            if (call.name.starts_with('p'))
                call.offset = static_cast<std::int64_t>(arguments[3]);
        }
    }

    std::string dataOfWrite(
        pid_t thread, bool isVector, const std::array<unsigned long long, 6>& arguments) const
    {
        if (!isVector)
            return readMemory(
                thread, arguments[1], std::min<std::size_t>(arguments[2], mostDataKept));
        std::string data;
        for (unsigned long long index = 0; index < arguments[2]; ++index) {
            const auto piece = readObject<iovec>(thread, arguments[1] + index * sizeof(iovec));
            data += readMemory(thread, reinterpret_cast<unsigned long long>(piece.iov_base),
                std::min(piece.iov_len, mostDataKept));
        }
        return data;
    }

    static std::string readMemory(pid_t thread, unsigned long long address, std::size_t size)
    {
        std::string data(size, '\0');
        const iovec here = {data.data(), data.size()};
        // NOLINTNEXTLINE(performance-no-int-to-ptr): an address of the other process
        const iovec there = {reinterpret_cast<void*>(address), size};
        const ssize_t got = ::process_vm_readv(thread, &here, 1, &there, 1, 0);
        data.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
        return data;
    }

    template <typename Object>
    static Object readObject(pid_t thread, unsigned long long address)
    {
        Object object = {};
        const std::string data = readMemory(thread, address, sizeof object);
        if (data.size() == sizeof object)
            std::memcpy(&object, data.data(), sizeof object);
        return object;
    }

    /// Page by page: behind the text's end there may be no memory.
    static std::string readText(pid_t thread, unsigned long long address)
    {
        constexpr std::size_t page = 4096;
        std::string text;
        while (address != 0 && text.size() < PATH_MAX) {
            const std::size_t size = page - address % page;
            const std::string piece = readMemory(thread, address, size);
            if (const std::size_t end = piece.find('\0'); end != std::string::npos)
                return text + piece.substr(0, end);
            if (piece.size() < size)
                break;
            text += piece;
            address += size;
        }
        return text;
    }

    /// The open file that a path stands for (proc(5)); -1 for any other path.
    static int ownDescriptor(const std::string& path)
    {
        constexpr std::string_view folder = "/proc/self/fd/";
        return path.starts_with(folder) ? std::atoi(path.c_str() + folder.size()) : -1;
    }

    std::string pathArgument(pid_t thread, const std::array<unsigned long long, 6>& arguments,
        int folder, int path) const
    {
        const std::string text = readText(thread, arguments[static_cast<std::size_t>(path)]);
        if (const int descriptor = ownDescriptor(text); descriptor >= 0)
            return pathOfDescriptor(descriptor);
        if (text.starts_with('/'))
            return normal(text);
        const int base =
            folder < 0 ? AT_FDCWD : static_cast<int>(arguments[static_cast<std::size_t>(folder)]);
        const std::string above = base == AT_FDCWD ? target("cwd") : pathOfDescriptor(base);
        return text.empty() ? above : normal(fs::path{above} / text);
    }

    /// "folder/." is the folder, too.
    static std::string normal(const fs::path& path)
    {
        std::string text = path.lexically_normal().string();
        if (text.size() > 1 && text.ends_with('/'))
            text.pop_back();
        return text;
    }

    std::string pathOfDescriptor(int descriptor) const
    {
        return target("fd/" + std::to_string(descriptor));
    }

    std::string target(const std::string& link) const
    {
        std::error_code ignored;
        return fs::read_symlink("/proc/" + std::to_string(m_process) + '/' + link, ignored)
            .string();
    }

    bool isInside(const std::string& path) const
    {
        return std::ranges::any_of(m_roots, [&](const std::string& root) {
            return path.starts_with(root)
                && (path.size() == root.size() || path[root.size()] == '/');
        });
    }

    const std::vector<std::string>& m_roots;
    const Judge& m_judge;
    Stream m_output;
    Stream m_error;
    pid_t m_process = -1;
    bool m_hasEnded = false;
    std::map<pid_t, Thread> m_threads;
    TracedOutcome m_outcome;
};

}  // namespace

std::optional<std::string> TracedProcess::whyNotPossible()
{
    constexpr int refused = 1;
    const pid_t child = ::fork();
    if (child < 0)
        fail("cannot fork");
    if (child == 0) {
        const bool isRefused = ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0 && errno == EPERM;
        ::_exit(isRefused ? refused : 0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    if (WIFEXITED(status) && WEXITSTATUS(status) == refused)
        return "this machine allows no ptrace (EPERM)";
    return std::nullopt;
}

TracedOutcome TracedProcess::run(const std::function<CallVerdict(const TracedCall&)>& judge) const
{
    return Trace{m_roots, judge}.run(m_command, m_environment);
}

#else

std::optional<std::string> TracedProcess::whyNotPossible()
{
    return "the tracer knows x86-64 alone";
}

TracedOutcome TracedProcess::run(const std::function<CallVerdict(const TracedCall&)>&) const
{
    throw std::logic_error{"the tracer knows x86-64 alone"};
}

#endif

TracedProcess::TracedProcess(std::vector<std::string> command,
    std::map<std::string, std::string> environment, std::vector<std::string> roots)
    : m_command(std::move(command))
    , m_environment(std::move(environment))
    , m_roots(std::move(roots))
{
}

}  // namespace tidemark
