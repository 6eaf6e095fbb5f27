#pragma once

#include "UpdateInfo.h"

#include <string>

#include <sys/types.h>

namespace tidemark {

/// What the updater does for ProcessUpdateInstaller: reads the text of a feed that announces a version,
/// from its standard input, has SelfUpdater install that in the place of an application that runs, and
/// prints InstallReports. Needs a QCoreApplication, and no other threads.
namespace InstallRun {

/// Ends early, and leaves nothing behind, by a signal that asks this process to end. Returns the exit
/// status: 0 when the swap waits for the end of the application, which is the process `application` and
/// of version `runningVersion`.
int run(pid_t application, const std::string& runningVersion);

}  // namespace InstallRun

}  // namespace tidemark
