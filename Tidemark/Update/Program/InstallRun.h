#pragma once

#include "UpdateInfo.h"

#include <string>

#include <sys/types.h>

namespace tidemark {

/// What the updater does for ProcessUpdateInstaller: has SelfUpdater install a version in the place of an application
/// that runs, and prints InstallReports meanwhile. Needs a QCoreApplication, and no other threads.
namespace InstallRun {

/// The application that runs, and waits for this.
struct Application {
    pid_t process = 0;
    std::string executable = {};  ///< Its program's path, without links.
    std::string version = {};
};

/// Ends early, and leaves nothing behind, by a signal that asks this process to end. Returns the exit status: 0 when
/// the swap waits for the application's end.
int run(const Application& application, const UpdateInfo& update);

}  // namespace InstallRun

}  // namespace tidemark
