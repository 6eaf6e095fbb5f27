#pragma once

#include <condition_variable>
#include <mutex>

namespace tidemark {

/// Holds the threads that come to it while it is closed. Safe from any thread.
class Gate {
public:
    void close()
    {
        const std::lock_guard lock{m_mutex};
        m_isClosed = true;
    }

    void open()
    {
        const std::lock_guard lock{m_mutex};
        m_isClosed = false;
        m_opened.notify_all();
    }

    void pass()
    {
        std::unique_lock lock{m_mutex};
        ++m_waiting;
        m_came.notify_all();
        m_opened.wait(lock, [&] { return !m_isClosed; });
        --m_waiting;
    }

    /// Waits until a thread is held.
    void waitUntilSomebodyWaits()
    {
        std::unique_lock lock{m_mutex};
        m_came.wait(lock, [&] { return m_waiting > 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    std::condition_variable m_came;
    int m_waiting = 0;
    bool m_isClosed = false;
};

}  // namespace tidemark
