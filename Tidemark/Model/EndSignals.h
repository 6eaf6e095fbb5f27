#pragma once

#include "FileDescriptor.h"

#include <QSocketNotifier>

#include <csignal>
#include <functional>

namespace tidemark {

/// Tells in the event loop that this process has been asked to end: by SIGINT, SIGTERM, or SIGHUP unless that
/// is ignored.
///
/// To be made on the main thread before there are others, so that they let these signals through to it. The
/// first signal is told; a second one ends the process at once.
class EndSignals {
public:
    /// Throws system_error if the kernel has no descriptor left.
    explicit EndSignals(std::function<void()> onSignal);
    ~EndSignals();

    /// Whether one has arrived that was not told yet.
    bool isPending() const;

    /// Keeps the signals waiting, for this thread and those that it starts, until one of these is made,
    /// which puts that back at its end. Returns what was kept waiting before.
    static sigset_t hold();

    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

private:
    void signalArrived();

    sigset_t m_before;
    FileDescriptor m_signals;
    QSocketNotifier m_notifier;
    std::function<void()> m_onSignal;
};

}  // namespace tidemark
