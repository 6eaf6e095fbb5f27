#pragma once

#include "Date.h"

#include <functional>
#include <memory>
#include <vector>

namespace tidemark::bench {

/// The event loop of this thread, which takes the time of each of its turns.
///
/// A turn begins with the first event after the loop has looked for what is new, and ends when it looks
/// or waits again: for so long does nobody else get an answer. A look that finds nothing is no turn, so
/// rest between the turns does not count. One at a time, on the main thread.
class MeasuredLoop {
public:
    MeasuredLoop();
    ~MeasuredLoop();

    MeasuredLoop(const MeasuredLoop&) = delete;
    MeasuredLoop& operator=(const MeasuredLoop&) = delete;

    /// Has the loop call `work` as an event of its own.
    void post(std::function<void()> work);

    /// Runs the loop until `isDone` says so, which is asked after each turn. Throws runtime_error when
    /// that takes longer than two minutes.
    void runUntil(const std::function<bool()>& isDone);

    /// The turns since it was last asked for them.
    std::vector<Seconds> takeTurns();

    /// The longest of them; zero when there was none.
    Seconds takeLongestTurn();

private:
    class Application;

    std::unique_ptr<Application> m_application;
};

}  // namespace tidemark::bench
