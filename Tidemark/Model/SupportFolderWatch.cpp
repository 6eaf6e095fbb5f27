#include "SupportFolderWatch.h"

#include "SystemCall.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>

namespace tidemark {

SupportFolderWatch::SupportFolderWatch(FileURL supportFolder, std::function<void()> onChange)
    : m_supportFolder(std::move(supportFolder))
    , m_onChange(std::move(onChange))
    , m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (!m_inotify.isOpen())
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
        [this] { somethingHappened(); });
    follow();
}

void SupportFolderWatch::follow()
{
    forget();
    // A file that somebody has open is removed by taking its name away, which changes its count of names.
    constexpr std::uint32_t leaving = IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF | IN_DONT_FOLLOW;
    for (const FileURL& url :
        {m_supportFolder, m_supportFolder.appending("lock"), m_supportFolder.appending("socket")}) {
        const int watch = ::inotify_add_watch(m_inotify.get(), systemPath(url), leaving);
        if (watch >= 0)
            m_watches.push_back(watch);
    }
}

void SupportFolderWatch::forget()
{
    for (const int watch : m_watches)
        ::inotify_rm_watch(m_inotify.get(), watch);
    m_watches.clear();
}

void SupportFolderWatch::somethingHappened()
{
    std::array<char, 4096> events;
    while (uninterrupted([&] { return ::read(m_inotify.get(), events.data(), events.size()); }) > 0)
        continue;  // what it was is seen by looking
    m_onChange();
}

}  // namespace tidemark
