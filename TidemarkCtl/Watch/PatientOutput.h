#pragma once

#include <QSocketNotifier>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tidemark {

/// Writes text to a file descriptor and never waits for whoever reads it: what is not taken yet is held back
/// until it is. For a thread with an event loop, which goes on serving others meanwhile.
class PatientOutput {
public:
    /// While so many bytes are held back, more text is dropped.
    static constexpr std::size_t mostPending = 1 << 20;

    /// The descriptor stays the caller's. `onFailure` is called at most once, with an errno, when it cannot be
    /// written to; nothing is written any more then.
    PatientOutput(int descriptor, std::function<void(int error)> onFailure);

    void write(std::string_view text);

    /// Waits until nothing is held back, but no longer than this.
    void finish(std::chrono::milliseconds atMost);

private:
    using Clock = std::chrono::steady_clock;

    void writeUntil(Clock::time_point deadline);
    bool waitUntilReady(Clock::time_point deadline) const;
    void writeOnce();
    void forgetPending();

    int m_descriptor;
    std::function<void(int error)> m_onFailure;
    bool m_hasFailed = false;
    std::string m_pending;
    std::size_t m_written = 0;  ///< Of m_pending.
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
