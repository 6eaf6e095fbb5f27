#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace tidemark {

/// Counts what happens on other threads. Safe from any thread.
class Tally {
public:
    void add()
    {
        const std::lock_guard lock{m_mutex};
        ++m_count;
        m_changed.notify_all();
    }

    /// Gives back the count and starts again at zero.
    int take()
    {
        const std::lock_guard lock{m_mutex};
        return std::exchange(m_count, 0);
    }

    /// Waits until the count is at least `count`; false if that does not happen in a time that is long even for
    /// a busy machine.
    bool reaches(int count)
    {
        std::unique_lock lock{m_mutex};
        return m_changed.wait_for(lock, std::chrono::seconds{60}, [&] { return m_count >= count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

}  // namespace tidemark
