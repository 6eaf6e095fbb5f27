#pragma once

#include "Countdown.h"
#include "FileDescriptor.h"

#include <QSocketNotifier>

namespace tidemark {

/// A countdown by the time since the system's start (timerfd_create(2), CLOCK_BOOTTIME), which nobody can
/// set and which goes on in a suspend. It does not wake the machine; while it is not running, nothing
/// wakes the process.
class BootTimeCountdown final : public Countdown {
public:
    /// Throws system_error if the kernel has no timer left.
    BootTimeCountdown();

    void start(Seconds duration, std::function<void()> ring) override;
    void cancel() override;

private:
    void setKernelTimer(Seconds duration);
    void timerIsReadable();

    FileDescriptor m_timer;
    QSocketNotifier m_notifier;
    std::function<void()> m_ring;
};

}  // namespace tidemark
