// The updater, started by the application for itself:
//
//   tidemark-updater check RUNNING-VERSION
//   tidemark-updater install PROCESS EXECUTABLE RUNNING-VERSION VERSION URL
#include "FeedReader.h"
#include "InstallRun.h"

#include <QCoreApplication>

#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <span>
#include <string>

namespace tidemark {

namespace {

constexpr int exitWrongUsage = 2;

int explain()
{
    std::fputs("tidemark-updater: Tidemark starts this by itself to look for a newer version and "
               "to install it\n",
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

/// The application holds signals back, and who it starts inherits that. A reader that is gone is no reason to end
/// without tidying up.
void takeSignals()
{
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
}

int install(std::span<const char* const> arguments)
{
    const InstallRun::Application application{
        .process = processIn(arguments[0]), .executable = arguments[1], .version = arguments[2]};
    if (application.process <= 0)
        return explain();
    return InstallRun::run(application,
        {.version = arguments[3],
            .downloadURL = QUrl{QString::fromUtf8(arguments[4]), QUrl::StrictMode}});
}

int run(std::span<const char* const> arguments)
{
    constexpr std::size_t checkArguments = 2;
    constexpr std::size_t installArguments = 6;
    const std::string work = arguments.empty() ? "" : arguments[0];
    if (work == "check" && arguments.size() == checkArguments)
        FeedReader::run(arguments[1]);
    if (work == "install" && arguments.size() == installArguments)
        return install(arguments.subspan(1));
    return explain();
}

}  // namespace

}  // namespace tidemark

int main(int argc, char* argv[])
{
    using namespace tidemark;
    takeSignals();
    const std::span<const char* const> all{argv, static_cast<std::size_t>(argc)};
    const QCoreApplication application{argc, argv};
    const int status = run(all.subspan(all.empty() ? 0 : 1));
    // Qt would wait at its end for a name server that still owes an answer.
    ::_exit(status);
}
