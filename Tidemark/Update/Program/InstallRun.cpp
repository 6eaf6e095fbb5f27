#include "InstallRun.h"

#include "EndSignals.h"
#include "InstallLocation.h"
#include "InstallReport.h"
#include "SelfUpdater.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

#include <cstdio>

namespace tidemark::InstallRun {

namespace {

/// An application that is gone hears nothing, and this process is told to end then.
void print(const InstallReport& report)
{
    const std::string line = report.line();
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

SelfUpdater::Options optionsFor(const Application& application)
{
    return {.bundle = InstallLocation::bundleOf(FileURL{application.executable}),
        .runningVersion = application.version,
        .process = application.process};
}

}  // namespace

int run(const Application& application, const UpdateInfo& update)
{
    const EndSignals signals{[] { QCoreApplication::exit(1); }};
    SelfUpdater updater{
        optionsFor(application), [] { return std::make_unique<QNetworkAccessManager>(); }};
    updater.install(
        update,
        [](std::int64_t received, std::optional<std::int64_t> total) {
            print({UpdateProgress{.received = received, .total = total}});
        },
        [](const std::exception_ptr& failure) {
            print({failure ? InstallReport::Content{InstallReport::Failure::of(failure)}
                           : InstallReport::SwapWaits{}});
            QCoreApplication::exit(failure ? 1 : 0);
        });
    return QCoreApplication::exec();
}

}  // namespace tidemark::InstallRun
