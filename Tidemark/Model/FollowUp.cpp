#include "FollowUp.h"

#include <algorithm>

namespace tidemark {

/// Sweeps that follow each other without an event leave the processor alone at least so long, whatever the
/// files' dates and the clock say.
static constexpr Seconds rest{1};

void FollowUp::didSweep(std::optional<Date> comingOfAge, Date now)
{
    cancel();
    m_due = comingOfAge;
    if (m_due)
        m_due = std::max(*m_due, now + rest);
}

void FollowUp::didFail(Date now)
{
    if (m_pause == Seconds{0} || m_wasTaken)
        m_pause = std::clamp(2 * m_pause, shortestPause, longestPause);
    m_wasTaken = false;
    m_due = now + m_pause;
}

void FollowUp::didPlan(std::optional<Date> due, Date earliest)
{
    cancel();
    m_due = due;
    if (m_due)
        m_due = std::max(*m_due, earliest);
}

void FollowUp::cancel()
{
    m_wasTaken = false;
    m_pause = Seconds{0};
    m_due.reset();
}

bool FollowUp::take(Date now)
{
    if (!m_due)
        return false;
    // The time of another try is a distance, not a date: a clock that was set back does not put it off.
    if (m_pause > Seconds{0})
        m_due = std::min(*m_due, now + m_pause);
    if (now < *m_due)
        return false;
    m_due.reset();
    m_wasTaken = true;
    return true;
}

}  // namespace tidemark
