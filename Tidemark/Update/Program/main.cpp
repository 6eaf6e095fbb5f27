// The updater, started by the application for itself. PROCESS is the application:
//
//   tidemark-updater check PROCESS VERSION
//   tidemark-updater install PROCESS VERSION
#include "EndSignals.h"
#include "FeedReader.h"
#include "InstallRun.h"

#include <QCoreApplication>

#include <sys/prctl.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <span>
#include <string>

namespace tidemark {

namespace {

constexpr int exitWrongUsage = 2;

int refuse()
{
    std::fputs(
        "tidemark-updater: Tidemark starts this by itself to look for a newer version and to "
        "install it\n",
        stderr);
    return exitWrongUsage;
}

pid_t processIn(const std::string& text)
{
    pid_t process = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, process);
    return error == std::errc{} && rest == end ? process : 0;
}

/// Whatever the application holds back, which who it starts inherits. A reader that is gone is no reason
/// to end without tidying up.
void takeSignals()
{
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
}

/// Whatever ends the application, nobody waits for this process any more: it gets `signal` then. False if
/// that has ended already, or is another one.
bool followToTheEnd(pid_t application, int signal)
{
    return ::prctl(PR_SET_PDEATHSIG, signal) == 0 && ::getppid() == application;
}

int run(std::span<const char* const> arguments)
{
    constexpr std::size_t argumentCount = 3;
    if (arguments.size() != argumentCount)
        return refuse();
    const std::string work = arguments[0];
    const pid_t application = processIn(arguments[1]);
    const std::string version = arguments[2];
    if (work == "check" && followToTheEnd(application, SIGKILL))
        FeedReader::run(version);
    if (work == "install") {
        // A second one, such as the application's after a terminal's, does not end the process while it
        // tidies up.
        EndSignals::hold();
        if (followToTheEnd(application, SIGTERM))
            return InstallRun::run(application, version);
    }
    return refuse();
}

}  // namespace

}  // namespace tidemark

int main(int argc, char* argv[])
{
    using namespace tidemark;
    takeSignals();
    // Of the application's own start, and spent.
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
    const std::span<const char* const> all{argv, static_cast<std::size_t>(argc)};
    const QCoreApplication application{argc, argv};
    const int status = run(all.subspan(all.empty() ? 0 : 1));
    // Qt would wait at its end for a name server that still owes an answer.
    ::_exit(status);
}
