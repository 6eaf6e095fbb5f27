#include "WatcherFixture.h"

namespace tidemark {

WatcherTest::WatcherTest()
{
    m_folder.makeFolder("root");
}

FolderWatcherOptions WatcherTest::options()
{
    FolderWatcherOptions options;
    options.backend = GetParam();
    options.ownChanges = &m_ownChanges;
    options.time = &m_time;
    options.onLimitReached = [this](WatchBackend) { m_limits.add(); };
    options.beforeReading = [this] { m_gate.pass(); };
    return options;
}

void WatcherTest::watch(const std::vector<std::string>& roots)
{
    watch(roots, options());
}

void WatcherTest::watch(const std::vector<std::string>& roots, FolderWatcherOptions options)
{
    std::vector<FileURL> folders;
    for (const std::string& root : roots)
        folders.push_back(FileURL::directory(path(root)));
    m_watcher = std::make_unique<FolderWatcher>(
        folders, quietTime, [this] { m_calls.add(); }, std::move(options));
    m_watcher->start();
    ASSERT_TRUE(m_watcher->isStarted());
    m_watcher->settle();
}

int WatcherTest::changes()
{
    m_watcher->settle();
    m_time.advance(quietTime);
    m_watcher->settle();
    return m_calls.take();
}

bool WatcherTest::notices(const std::string& script)
{
    elsewhere(script);
    return changes() > 0;
}

void WatcherTest::elsewhere(const std::string& script) const
{
    otherProcess("cd '" + path() + "'; " + script);
}

std::string backendName(const testing::TestParamInfo<WatchBackend>& backend)
{
    return backend.param == WatchBackend::fanotify ? "fanotify" : "inotify";
}

}  // namespace tidemark
