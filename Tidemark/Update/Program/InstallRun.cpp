#include "InstallRun.h"

#include "EndSignals.h"
#include "InstallLocation.h"
#include "InstallReport.h"
#include "MemoryLimit.h"
#include "SelfUpdater.h"
#include "TemporaryDirectory.h"
#include "UpdateLeftovers.h"
#include "Updater.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <iterator>

namespace tidemark::InstallRun {

namespace {

/// An application that is gone hears nothing, and this process is told to end then.
void print(const InstallReport& report)
{
    const std::string line = report.line();
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

int fail(const std::exception_ptr& failure)
{
    print({InstallReport::Failure::of(failure)});
    return 1;
}

int succeed()
{
    print({InstallReport::SwapWaits{}});
    return 0;
}

/// What is to be installed; the application has found it, and passes it on.
UpdateInfo givenUpdate(const std::string& runningVersion)
{
    auto update = Updater::updateIn({std::istreambuf_iterator<char>{std::cin}, {}}, runningVersion);
    if (!update)
        throw std::runtime_error{"there is no newer version to install"};
    return *std::move(update);
}

/// By the file that the process executes, as it is named now.
std::optional<FileURL> bundleOf(pid_t application)
{
    const auto executable =
        std::filesystem::read_symlink("/proc/" + std::to_string(application) + "/exe");
    return InstallLocation::bundleOf(FileURL{executable.string()});
}

int install(const UpdateInfo& update, pid_t application, const std::string& runningVersion)
{
    const EndSignals signals{[] { QCoreApplication::exit(1); }};
    const MemoryLimit limit;
    const FileURL temporary = TemporaryDirectory::folder();
    UpdateLeftovers::remove(temporary);
    SelfUpdater updater{{.bundle = bundleOf(application),
                            .runningVersion = runningVersion,
                            .temporaryDirectory = temporary,
                            .process = application,
                            .downloaded = [&limit] { limit.lift(); }},
        [] { return std::make_unique<QNetworkAccessManager>(); }};
    std::exception_ptr failure =
        std::make_exception_ptr(std::runtime_error{"the update was stopped"});
    updater.install(
        update,
        [](std::int64_t received, std::optional<std::int64_t> total) {
            print({UpdateProgress{.received = received, .total = total}});
        },
        [&failure](const std::exception_ptr& outcome) {
            failure = outcome;
            QCoreApplication::exit(0);
        });
    QCoreApplication::exec();
    // Whoever stops it may come too late.
    return updater.cancel() ? succeed() : fail(failure);
}

}  // namespace

int run(pid_t application, const std::string& runningVersion)
{
    try {
        return install(givenUpdate(runningVersion), application, runningVersion);
    } catch (const std::exception&) {
        return fail(std::current_exception());
    }
}

}  // namespace tidemark::InstallRun
