#include "FolderWatcher.h"

#include "WatchReader.h"

#include <system_error>
#include <utility>

namespace tidemark {

namespace {

constexpr const char* queueLabel = "io.tidemark.watcher";

}  // namespace

/// What lasts from one start to the next stop. Whoever delivers holds it weakly.
struct FolderWatcher::Session {
    std::function<void()> onChange;
    std::function<void(WatchBackend)> onLimitReached;
    Debouncer& debouncer;
};

FolderWatcher::FolderWatcher(std::vector<FileURL> folders, Seconds debounce,
    std::function<void()> onChange, FolderWatcherOptions options)
    : m_folders(std::move(folders))
    , m_onChange(std::move(onChange))
    , m_options(std::move(options))
    , m_queue(queueLabel, m_options.time != nullptr ? *m_options.time : m_steadyTime)
    , m_debouncer(debounce, m_queue)
{
}

FolderWatcher::~FolderWatcher()
{
    stop();
}

void FolderWatcher::start()
{
    if (isStarted() || m_folders.empty())
        return;
    auto session =
        std::make_shared<Session>(Session{m_onChange, m_options.onLimitReached, m_debouncer});
    const WatchReader::Callbacks callbacks{
        [this, weak = std::weak_ptr{session}] { m_queue.async([weak] { delivered(weak); }); },
        [this, weak = std::weak_ptr{session}](
            WatchBackend backend) { m_queue.async([weak, backend] { reached(weak, backend); }); }};
    try {
        auto reader = std::make_shared<WatchReader>(m_folders, m_options, callbacks);
        const std::lock_guard lock{m_mutex};
        m_session = std::move(session);
        m_reader = std::move(reader);
    } catch (const std::system_error&) {
        // Without descriptors or threads there is nothing to watch with: it stays stopped.
    }
}

/// Changes were delivered; runs on the queue.
void FolderWatcher::delivered(const std::weak_ptr<Session>& session)
{
    const std::shared_ptr<Session> started = session.lock();
    if (!started)
        return;
    started->debouncer.schedule([session] {
        if (const std::shared_ptr<Session> alive = session.lock())
            alive->onChange();
    });
}

void FolderWatcher::reached(const std::weak_ptr<Session>& session, WatchBackend limit)
{
    const std::shared_ptr<Session> started = session.lock();
    if (started && started->onLimitReached)
        started->onLimitReached(limit);
}

void FolderWatcher::stop()
{
    std::shared_ptr<Session> session;
    std::shared_ptr<WatchReader> reader;
    {
        const std::lock_guard lock{m_mutex};
        session.swap(m_session);
        reader.swap(m_reader);
    }
    if (!session)
        return;
    reader->stop();
    // From here on the queue finds no session, but for work that holds it already, which is waited for.
    session.reset();
    m_debouncer.cancel();
    m_queue.barrier();
}

bool FolderWatcher::isStarted() const
{
    const std::lock_guard lock{m_mutex};
    return m_session != nullptr;
}

std::vector<WatchStatus> FolderWatcher::status() const
{
    const std::shared_ptr<WatchReader> reader = currentReader();
    return reader ? reader->status() : std::vector<WatchStatus>{};
}

void FolderWatcher::settle()
{
    const std::shared_ptr<WatchReader> reader = currentReader();
    if (!reader)
        return;
    reader->settle();
    m_queue.barrier();
}

std::shared_ptr<WatchReader> FolderWatcher::currentReader() const
{
    const std::lock_guard lock{m_mutex};
    return m_reader;
}

}  // namespace tidemark
