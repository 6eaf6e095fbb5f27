#pragma once

#include "FolderWatcher.h"
#include "Gate.h"
#include "ManualTime.h"
#include "OtherProcess.h"
#include "OwnChangeLog.h"
#include "Tally.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tidemark {

/// A folder "root" with a watcher on it, run once with each of the kernel's interfaces. The quiet time
/// runs by a clock that the test turns, so nothing here waits for time to pass.
class WatcherTest : public testing::TestWithParam<WatchBackend> {
protected:
    WatcherTest();

    std::string path(const std::string& relative = "") const { return m_folder.path(relative); }

    /// Options for the backend under test.
    FolderWatcherOptions options();

    /// Starts a watcher on folders given relative to the test's own, and waits until all is looked up.
    void watch(const std::vector<std::string>& roots = {"root"});
    void watch(const std::vector<std::string>& roots, FolderWatcherOptions options);

    /// How often the watcher called for what happened since the last question, once it was quiet.
    int changes();

    /// Makes another process run a script in the test's folder; whether the watcher called for it.
    bool notices(const std::string& script);

    /// The same without the question.
    void elsewhere(const std::string& script) const;

    WatchStatus status(std::size_t root = 0) const { return m_watcher->status().at(root); }

    TemporaryFolder m_folder;
    ManualTime m_time;
    OwnChangeLog m_ownChanges;
    Gate m_gate;
    Tally m_calls;
    Tally m_limits;
    std::unique_ptr<FolderWatcher> m_watcher;
};

/// For INSTANTIATE_TEST_SUITE_P.
std::string backendName(const testing::TestParamInfo<WatchBackend>& backend);

inline auto bothBackends()
{
    return testing::Values(WatchBackend::fanotify, WatchBackend::inotify);
}

inline constexpr Seconds quietTime{1};

}  // namespace tidemark
