#include "WallClockAlarm.h"

#include "SystemCall.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace tidemark {

namespace {

FileDescriptor makeTimer()
{
    FileDescriptor timer{::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)};
    if (!timer.isOpen())
        throw std::system_error{systemError(errno), "cannot make a timer"};
    return timer;
}

/// Zero would switch the timer off, and far futures do not fit every kernel's clock.
double withinRange(double seconds)
{
    constexpr double aboutTheYear4000 = 64e9;
    return std::clamp(seconds, 1.0, aboutTheYear4000);
}

}  // namespace

WallClockAlarm::WallClockAlarm()
    : m_timer(makeTimer())
    , m_notifier(m_timer.get(), QSocketNotifier::Read)
{
    QObject::connect(
        &m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { timerIsReadable(); });
}

WallClockAlarm::~WallClockAlarm() = default;

void WallClockAlarm::set(Date date)
{
    setKernelTimer(withinRange(date.time_since_epoch().count()));
}

void WallClockAlarm::cancel()
{
    setKernelTimer(0);
}

void WallClockAlarm::setKernelTimer(double seconds)
{
    const double whole = std::floor(seconds);
    struct itimerspec time { };
    time.it_value.tv_sec = static_cast<time_t>(whole);
    time.it_value.tv_nsec = static_cast<long>((seconds - whole) * 1e9);
    // Cannot fail: the descriptor is a timer's and the time is one.
    ::timerfd_settime(m_timer.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &time, nullptr);
}

void WallClockAlarm::timerIsReadable()
{
    std::uint64_t expirations = 0;
    const ssize_t size =
        uninterrupted([&] { return ::read(m_timer.get(), &expirations, sizeof expirations); });
    const bool wasClockSet = size < 0 && errno == ECANCELED;
    if ((size > 0 || wasClockSet) && m_ring)
        m_ring();
}

}  // namespace tidemark
