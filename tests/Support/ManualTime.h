#pragma once

#include "Date.h"
#include "TimeSource.h"

#include <mutex>
#include <set>

namespace tidemark {

/// A monotonic clock that stands still until a test turns it. Safe from any thread.
class ManualTime final : public TimeSource {
public:
    Instant now() const override
    {
        const std::lock_guard lock{m_mutex};
        return m_now;
    }

    void sleep(Sleeper& sleeper, std::unique_lock<std::mutex>& lock, Instant deadline) override
    {
        if (now() < deadline)
            sleeper.wake.wait(lock);
    }

    void attach(Sleeper& sleeper) override
    {
        const std::lock_guard lock{m_sleepersMutex};
        m_sleepers.insert(&sleeper);
    }

    void detach(Sleeper& sleeper) override
    {
        const std::lock_guard lock{m_sleepersMutex};
        m_sleepers.erase(&sleeper);
    }

    void advance(Seconds by)
    {
        {
            const std::lock_guard lock{m_mutex};
            m_now += std::chrono::round<Instant::duration>(by);
        }
        const std::lock_guard lock{m_sleepersMutex};
        for (Sleeper* const sleeper : m_sleepers) {
            // Whoever has looked at the clock before is asleep by now.
            const std::lock_guard sleeperLock{sleeper->mutex};
            sleeper->wake.notify_all();
        }
    }

private:
    mutable std::mutex m_mutex;
    Instant m_now{};
    std::mutex m_sleepersMutex;
    std::set<Sleeper*> m_sleepers;
};

}  // namespace tidemark
