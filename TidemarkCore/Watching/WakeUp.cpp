#include "WakeUp.h"

#include "SystemCall.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace tidemark {

WakeUp::WakeUp()
    : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_event.isOpen())
        throw std::system_error{systemError(errno), "cannot make an event"};
}

void WakeUp::signal()
{
    // It fails only when the counter is full, and then the thread is woken anyway.
    [[maybe_unused]] const int result =
        uninterrupted([&] { return ::eventfd_write(m_event.get(), 1); });
}

void WakeUp::clear()
{
    eventfd_t count = 0;
    // Nothing to take back is fine.
    [[maybe_unused]] const int result =
        uninterrupted([&] { return ::eventfd_read(m_event.get(), &count); });
}

bool WakeUp::isSignalled() const
{
    pollfd event{.fd = m_event.get(), .events = POLLIN, .revents = 0};
    return uninterrupted([&] { return ::poll(&event, 1, 0); }) > 0;
}

}  // namespace tidemark
