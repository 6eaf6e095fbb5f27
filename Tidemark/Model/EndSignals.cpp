#include "EndSignals.h"

#include "SystemCall.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <system_error>

namespace tidemark {

namespace {

sigset_t endSignals()
{
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    struct sigaction hangUp;
    if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN)
        ::sigaddset(&signals, SIGHUP);
    return signals;
}

/// Makes the kernel queue the signals in place of delivering them. Returns what was blocked before.
sigset_t block(const sigset_t& signals)
{
    sigset_t before;
    ::pthread_sigmask(SIG_BLOCK, &signals, &before);
    return before;
}

FileDescriptor readerOf(const sigset_t& signals)
{
    FileDescriptor reader{::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC)};
    if (!reader.isOpen())
        throw std::system_error{systemError(errno), "cannot wait for signals"};
    return reader;
}

}  // namespace

EndSignals::EndSignals(std::function<void()> onSignal)
    : m_before(block(endSignals()))
    , m_signals(readerOf(endSignals()))
    , m_notifier(m_signals.get(), QSocketNotifier::Read)
    , m_onSignal(std::move(onSignal))
{
    QObject::connect(
        &m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { signalArrived(); });
}

EndSignals::~EndSignals()
{
    ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

sigset_t EndSignals::hold()
{
    return block(endSignals());
}

bool EndSignals::isPending() const
{
    struct pollfd signals {
        m_signals.get(), POLLIN, 0
    };
    return ::poll(&signals, 1, 0) == 1;
}

void EndSignals::signalArrived()
{
    struct signalfd_siginfo info;
    if (uninterrupted([&] { return ::read(m_signals.get(), &info, sizeof info); }) <= 0)
        return;
    m_notifier.setEnabled(false);
    ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    m_onSignal();
}

}  // namespace tidemark
