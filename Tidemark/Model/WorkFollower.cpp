#include "WorkFollower.h"

namespace tidemark {

WorkFollower::WorkFollower(Listener listener, Post post, const std::atomic<bool>& stop)
    : m_listener(std::move(listener))
    , m_post(std::move(post))
    , m_stop(stop)
{
}

void WorkFollower::willScan(const FileURL& folder)
{
    if (m_listener.willScan)
        m_post([tell = m_listener.willScan, folder] { tell(folder); });
}

void WorkFollower::willPerform(std::size_t index, std::size_t count)
{
    if (m_listener.willPerform)
        m_post([tell = m_listener.willPerform, index, count] { tell(index, count); });
}

void WorkFollower::didPerform(const JournalEntry& entry)
{
    if (m_listener.didPerform)
        m_post([tell = m_listener.didPerform, entry] { tell(entry); });
}

void WorkFollower::didRestore(const JournalEntry& entry, const FileURL& place)
{
    if (m_listener.didRestore)
        m_post([tell = m_listener.didRestore, entry, place] { tell(entry, place); });
}

}  // namespace tidemark
