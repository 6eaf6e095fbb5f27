#include "MainQueue.h"

#include "WakeUp.h"

#include <deque>
#include <mutex>
#include <utility>

namespace tidemark {

/// Qt's own queue would do, were it not invisible to the thread sanitizer.
struct MainQueue::State {
    WakeUp wakeUp;  ///< Signalled while work waits.
    std::mutex mutex;
    std::deque<Work> waiting;

    /// Takes the next work; empty when none waits.
    Work take()
    {
        const std::lock_guard lock{mutex};
        if (waiting.empty()) {
            wakeUp.clear();
            return {};
        }
        Work work = std::move(waiting.front());
        waiting.pop_front();
        return work;
    }
};

MainQueue::MainQueue()
    : m_state(std::make_shared<State>())
    , m_notifier(m_state->wakeUp.descriptor(), QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
        [state = m_state] { runPortion(*std::shared_ptr{state}); });
}

MainQueue::~MainQueue()
{
    std::deque<Work> dropped;  // is released after the lock
    const std::lock_guard lock{m_state->mutex};
    dropped.swap(m_state->waiting);
}

void MainQueue::post(Work work)
{
    const std::lock_guard lock{m_state->mutex};
    m_state->waiting.push_back(std::move(work));
    m_state->wakeUp.signal();
}

/// The caller holds the state: the work may destroy the queue.
void MainQueue::runPortion(State& state)
{
    constexpr int portion = 64;
    for (int count = 0; count < portion; ++count) {
        const Work work = state.take();
        if (!work)
            return;
        work();
    }
}

}  // namespace tidemark
