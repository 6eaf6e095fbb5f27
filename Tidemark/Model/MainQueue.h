#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace tidemark {

/// Runs work of other threads on the thread that made it, in order, from that thread's event loop.
///
/// Much work is done in portions, so that the event loop goes on meanwhile. What has not run when the queue
/// is destroyed is dropped; work may destroy the queue.
class MainQueue {
public:
    using Work = std::function<void()>;

    /// Throws system_error if there is no descriptor left.
    MainQueue();
    ~MainQueue();

    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    /// Safe from any thread.
    void post(Work work);

private:
    struct State;

    static void runPortion(State& state);

    std::shared_ptr<State> m_state;
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
