#include "SampleDesktop.h"

#include <filesystem>

namespace tidemark::bench {

namespace {

FileURL madeRuntimeFolder(const Place& place)
{
    FileURL folder = place.folder->url().appending("run", FileURL::Kind::directory);
    std::filesystem::create_directories(folder.path());
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
    return folder;
}

}  // namespace

SampleDesktop::SampleDesktop(const Place& place)
    : m_runtimeFolder(madeRuntimeFolder(place))
    , m_display(std::make_unique<RunningProcess>(
          std::vector<std::string>{"/usr/bin/Xvfb", "-displayfd", "1", "-nolisten", "tcp",
              "-noreset", "-screen", "0", "1280x800x24"},
          std::vector<std::string>{}))
    , m_displayName(':' + m_display->waitForLine(""))
    , m_bus(std::make_unique<RunningProcess>(std::vector<std::string>{"/usr/bin/dbus-daemon",
                                                 "--session", "--nofork", "--print-address=1"},
          std::vector<std::string>{"XDG_RUNTIME_DIR=" + m_runtimeFolder.path()}))
    , m_busAddress(m_bus->waitForLine("unix:"))
    , m_tray(std::make_unique<RunningProcess>(
          std::vector<std::string>{TIDEMARK_BENCH_TRAY_PROGRAM}, environment()))
{
    m_tray->waitForLine("ready");
}

std::vector<std::string> SampleDesktop::environment() const
{
    return {"DISPLAY=" + m_displayName, "DBUS_SESSION_BUS_ADDRESS=" + m_busAddress,
        "XDG_RUNTIME_DIR=" + m_runtimeFolder.path(), "QT_QPA_PLATFORM=xcb", "NO_AT_BRIDGE=1"};
}

}  // namespace tidemark::bench
