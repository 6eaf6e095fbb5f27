#pragma once

#include "FileDescriptor.h"

#include <cstdint>
#include <vector>

namespace tidemark {

/// Watches many sockets by one descriptor (epoll), so that one notifier of an event loop serves them all.
///
/// Sockets go by numbers that the caller chooses and never reuses: an event for a socket that has been
/// closed meanwhile is then one for nobody.
class RemotePoller {
public:
    enum class Interest {
        reading,
        readingAndWriting,
        arrivals,  ///< Told once per new client, not for as long as one waits.
    };

    struct Event {
        std::uint64_t id = 0;
        bool isReadable = false;  ///< Or the other side is gone, which reading tells.
        bool isWritable = false;
    };

    /// Throws system_error.
    RemotePoller();

    /// Readable while there are events.
    int descriptor() const { return m_poll.get(); }

    /// Returns whether the kernel had the memory for it.
    bool add(int socket, std::uint64_t id, Interest interest);

    /// For a socket that was added. What has happened already is told once more.
    void change(int socket, std::uint64_t id, Interest interest);

    /// To be called before the socket is closed: a child process that has not yet started its program may
    /// keep it open.
    void remove(int socket);

    /// Some of what has happened, without waiting; the rest is told by the next call.
    std::vector<Event> events();

private:
    FileDescriptor m_poll;
};

}  // namespace tidemark
