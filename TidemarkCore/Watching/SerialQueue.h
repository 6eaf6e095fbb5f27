#pragma once

#include "Date.h"
#include "TimeSource.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace tidemark {

/// Runs work on one thread of its own, one piece after the other, in the order in which it was given.
///
/// Safe from any thread, its own included. Work must not throw: an exception that leaves it ends the
/// process. An idle queue sleeps without a time-out. Destruction waits for the work that is running and
/// drops the rest; work may destroy its own queue, which then ends when that work returns.
class SerialQueue {
    struct State;

public:
    using Work = std::function<void()>;

    enum class Priority {
        normal,
        low,  ///< Nice 10 and the lowest best-effort I/O level, where the system allows it.
    };

    /// Work that waits for its time. A plain handle: dropping it cancels nothing, and it may outlive the
    /// queue.
    class DelayedWork {
    public:
        DelayedWork() = default;

        /// The work will not run unless it has begun. What it holds is released before this returns.
        void cancel();

    private:
        friend class SerialQueue;
        using Key = std::pair<TimeSource::Instant, std::uint64_t>;

        std::weak_ptr<State> m_state;
        Key m_key;
        std::weak_ptr<Work> m_work;
    };

    /// The thread is named after the last component of `label`, such as "io.tidemark.watcher". `time` must
    /// outlive the queue. Throws system_error if no thread can be started.
    SerialQueue(std::string label, TimeSource& time, Priority priority = Priority::normal);
    ~SerialQueue();

    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return m_label; }

    void async(Work work);

    /// Runs `work` when `delay` has passed on the queue's clock; work of the same instant runs in order.
    DelayedWork asyncAfter(Seconds delay, Work work);

    /// Waits until all work that was due before has run. Returns at once on the queue's own thread.
    void barrier();

    /// Whether the caller runs on this queue.
    bool isCurrent() const;

private:
    std::string m_label;
    TimeSource& m_time;
    std::shared_ptr<State> m_state;
    std::thread m_thread;
};

}  // namespace tidemark
