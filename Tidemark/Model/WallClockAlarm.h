#pragma once

#include "Alarm.h"
#include "FileDescriptor.h"

#include <QSocketNotifier>

#include <memory>

namespace tidemark {

/// An alarm by the system's wall clock, in a thread with a Qt event loop.
///
/// The kernel keeps it right through a suspend, after which it rings at once if its time has come, and tells
/// when the clock was set (timerfd_create(2)). While nothing is set, nothing wakes the process.
class WallClockAlarm final : public Alarm {
public:
    /// Throws system_error if the kernel has no timer left.
    WallClockAlarm();
    ~WallClockAlarm() override;

    void onRing(std::function<void()> ring) override { m_ring = std::move(ring); }
    void set(Date date) override;
    void cancel() override;

private:
    void setKernelTimer(double seconds);
    void timerIsReadable();

    FileDescriptor m_timer;
    QSocketNotifier m_notifier;
    std::function<void()> m_ring;
};

}  // namespace tidemark
