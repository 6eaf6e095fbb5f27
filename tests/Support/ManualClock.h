#pragma once

#include "Clock.h"

#include <mutex>

namespace tidemark {

/// A clock that stands still until a test moves it. Safe from any thread.
class ManualClock final : public Clock {
public:
    explicit ManualClock(Date now)
        : m_now(now)
    {
    }

    Date now() const override
    {
        const std::lock_guard lock{m_mutex};
        return m_now;
    }

    void set(Date now)
    {
        const std::lock_guard lock{m_mutex};
        m_now = now;
    }

    void advance(Seconds by)
    {
        const std::lock_guard lock{m_mutex};
        m_now += by;
    }

private:
    mutable std::mutex m_mutex;
    Date m_now;
};

}  // namespace tidemark
