#pragma once

#include "Date.h"
#include "SerialQueue.h"

#include <mutex>

namespace tidemark {

/// Collapses a burst of calls into one: an action runs when nothing was scheduled for `interval` after it.
///
/// Safe from any thread. The action runs on the queue, which must outlive the debouncer. Destruction cancels
/// nothing.
class Debouncer {
public:
    Debouncer(Seconds interval, SerialQueue& queue);

    /// Runs `action` once `interval` has passed, in place of what was scheduled before and has not run. An
    /// unbroken stream of calls closer together than `interval` postpones it for as long as it lasts.
    void schedule(SerialQueue::Work action);

    /// Forgets what was scheduled and has not begun to run.
    void cancel();

private:
    const Seconds m_interval;
    SerialQueue& m_queue;
    std::mutex m_mutex;
    SerialQueue::DelayedWork m_pending;
};

}  // namespace tidemark
