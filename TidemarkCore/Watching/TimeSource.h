#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tidemark {

/// What a thread sleeps on.
struct Sleeper {
    std::mutex mutex;
    std::condition_variable wake;
};

/// The monotonic clock, which no change of the time of day touches, and the way to sleep by it. Tests put
/// one in its place that they turn by hand. Safe from any thread.
class TimeSource {
public:
    using Instant = std::chrono::steady_clock::time_point;

    virtual ~TimeSource() = default;

    virtual Instant now() const = 0;

    /// Sleeps until `deadline` or until somebody notifies `sleeper`, whose mutex `lock` holds. May return
    /// earlier.
    virtual void sleep(Sleeper& sleeper, std::unique_lock<std::mutex>& lock, Instant deadline) = 0;

    /// Announces a sleeper, so that it can be woken when the clock is turned by hand. It stays known until
    /// `detach` has returned. Neither may be called with the sleeper's mutex held.
    virtual void attach(Sleeper& sleeper) = 0;
    virtual void detach(Sleeper& sleeper) = 0;
};

/// The system's monotonic clock.
class SteadyTime final : public TimeSource {
public:
    Instant now() const override;
    void sleep(Sleeper& sleeper, std::unique_lock<std::mutex>& lock, Instant deadline) override;
    void attach(Sleeper&) override { }
    void detach(Sleeper&) override { }
};

}  // namespace tidemark
