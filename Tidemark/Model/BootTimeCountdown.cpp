#include "BootTimeCountdown.h"

#include "SystemCall.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <system_error>
#include <utility>

namespace tidemark {

namespace {

FileDescriptor makeTimer()
{
    FileDescriptor timer{::timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC)};
    if (!timer.isOpen())
        throw std::system_error{systemError(errno), "cannot make a timer"};
    return timer;
}

}  // namespace

BootTimeCountdown::BootTimeCountdown()
    : m_timer(makeTimer())
    , m_notifier(m_timer.get(), QSocketNotifier::Read)
{
    QObject::connect(
        &m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { timerIsReadable(); });
}

void BootTimeCountdown::start(Seconds duration, std::function<void()> ring)
{
    m_ring = std::move(ring);
    constexpr Seconds shortest{1e-9};  // zero would switch the timer off
    setKernelTimer(std::max(duration, shortest));
}

void BootTimeCountdown::cancel()
{
    setKernelTimer(Seconds{0});
    m_ring = {};
}

void BootTimeCountdown::setKernelTimer(Seconds duration)
{
    const double whole = std::floor(duration.count());
    struct itimerspec time { };
    time.it_value.tv_sec = static_cast<time_t>(whole);
    time.it_value.tv_nsec = static_cast<long>(std::ceil((duration.count() - whole) * 1e9));
    // Cannot fail: the descriptor is a timer's and the time is one.
    ::timerfd_settime(m_timer.get(), 0, &time, nullptr);
}

void BootTimeCountdown::timerIsReadable()
{
    std::uint64_t expirations = 0;
    const ssize_t size =
        uninterrupted([&] { return ::read(m_timer.get(), &expirations, sizeof expirations); });
    if (size <= 0 || !m_ring)
        return;
    const std::function<void()> ring = std::exchange(m_ring, {});
    ring();
}

}  // namespace tidemark
