#include "RemotePoller.h"

#include "SystemCall.h"

#include <sys/epoll.h>

#include <array>

namespace tidemark {

namespace {

constexpr std::size_t mostEvents = 64;

epoll_event eventFor(std::uint64_t id, RemotePoller::Interest interest)
{
    epoll_event event = {};
    event.data.u64 = id;
    event.events = EPOLLIN | EPOLLRDHUP;
    if (interest == RemotePoller::Interest::readingAndWriting)
        event.events |= EPOLLOUT;
    if (interest == RemotePoller::Interest::arrivals)
        event.events |= EPOLLET;
    return event;
}

}  // namespace

RemotePoller::RemotePoller()
    : m_poll(::epoll_create1(EPOLL_CLOEXEC))
{
    if (!m_poll.isOpen())
        throw std::system_error{systemError(errno), "cannot watch sockets"};
}

bool RemotePoller::add(int socket, std::uint64_t id, Interest interest)
{
    epoll_event event = eventFor(id, interest);
    return ::epoll_ctl(m_poll.get(), EPOLL_CTL_ADD, socket, &event) == 0;
}

void RemotePoller::change(int socket, std::uint64_t id, Interest interest)
{
    epoll_event event = eventFor(id, interest);
    // It can fail only for a socket that was not added.
    ::epoll_ctl(m_poll.get(), EPOLL_CTL_MOD, socket, &event);
}

void RemotePoller::remove(int socket)
{
    ::epoll_ctl(m_poll.get(), EPOLL_CTL_DEL, socket, nullptr);
}

std::vector<RemotePoller::Event> RemotePoller::events()
{
    std::array<epoll_event, mostEvents> happened;
    const int count =
        uninterrupted([&] { return ::epoll_wait(m_poll.get(), happened.data(), mostEvents, 0); });
    std::vector<Event> events;
    for (int i = 0; i < count; ++i) {
        const epoll_event& event = happened[static_cast<std::size_t>(i)];
        const bool isWritable = (event.events & EPOLLOUT) != 0;
        const bool isReadable = (event.events & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0;
        events.push_back({event.data.u64, isReadable, isWritable});
    }
    return events;
}

}  // namespace tidemark
