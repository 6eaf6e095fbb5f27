#include "Coalescer.h"

#include <algorithm>

namespace tidemark {

void Coalescer::note(Instant now)
{
    if (!m_due)
        m_due = m_lastDelivery ? std::max(now, *m_lastDelivery + m_window) : now;
}

bool Coalescer::take(Instant now)
{
    return m_due && *m_due <= now && takeEarly(now);
}

bool Coalescer::takeEarly(Instant now)
{
    if (!m_due)
        return false;
    m_due.reset();
    m_lastDelivery = now;
    return true;
}

}  // namespace tidemark
