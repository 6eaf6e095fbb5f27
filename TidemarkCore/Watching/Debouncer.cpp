#include "Debouncer.h"

#include <utility>

namespace tidemark {

Debouncer::Debouncer(Seconds interval, SerialQueue& queue)
    : m_interval(interval)
    , m_queue(queue)
{
}

void Debouncer::schedule(SerialQueue::Work action)
{
    const std::lock_guard lock{m_mutex};
    m_pending.cancel();
    m_pending = m_queue.asyncAfter(m_interval, std::move(action));
}

void Debouncer::cancel()
{
    const std::lock_guard lock{m_mutex};
    m_pending.cancel();
    m_pending = {};
}

}  // namespace tidemark
