#pragma once

#include "Place.h"
#include "RunningProcess.h"

#include <memory>
#include <string>
#include <vector>

namespace tidemark::bench {

/// A desktop that nobody sees: an X display, a session bus, and something that takes in tray icons. It
/// ends with this value.
class SampleDesktop {
public:
    /// Throws system_error when Xvfb or dbus-daemon is not installed, filesystem_error.
    explicit SampleDesktop(const Place& place);

    /// What a program needs to find it: "NAME=value".
    std::vector<std::string> environment() const;

    /// Waits until another icon has come. Throws runtime_error if none does.
    void waitForIcon() { m_tray->waitForLine("icon"); }

private:
    FileURL m_runtimeFolder;
    std::unique_ptr<RunningProcess> m_display;
    std::string m_displayName;
    std::unique_ptr<RunningProcess> m_bus;
    std::string m_busAddress;
    std::unique_ptr<RunningProcess> m_tray;
};

}  // namespace tidemark::bench
