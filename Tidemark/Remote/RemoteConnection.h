#pragma once

#include "FileDescriptor.h"
#include "RemoteProtocol.h"
#include "RemoteRequestReader.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// The server's end of one connection: its request, and what is still to be written.
///
/// Nothing here waits or throws for what the client does; a client that leaves, or breaks the protocol, closes
/// the connection. Whoever calls it holds it by a shared pointer meanwhile, because `onChange` may let go of
/// it. For one thread.
class RemoteConnection {
public:
    enum class State {
        awaitingRequest,
        answering,
        finishing,  ///< The final message is there, but not written to its end.
        closed,
    };

    /// While so much waits for the client to read, interim messages are dropped.
    static constexpr std::size_t mostPending = 1 << 20;

    /// `socket` does not block. `onChange` is called when the state or `wantsToWrite` may have changed.
    RemoteConnection(FileDescriptor socket, std::function<void()> onChange);

    int descriptor() const { return m_socket.get(); }
    State state() const { return m_state; }
    bool wantsToWrite() const { return m_written < m_pending.size(); }

    /// Says the first word, the protocol's version.
    void greet();

    /// Reads once what has arrived. Returns the request when it is complete, which happens once.
    std::optional<std::string> read();

    /// Writes some of what is pending, so much that the event loop is not held.
    void write();

    /// Only while answering do these do anything. They throw length_error for 4 GiB or more.
    void sendInterim(std::string_view message);
    void sendFinal(std::string_view message);

    /// Closes unless the final message has been sent.
    void abandon();

    /// The socket itself is closed with the object.
    void close();

private:
    void append(RemoteProtocol::MessageKind kind, std::string_view message);

    FileDescriptor m_socket;
    std::function<void()> m_onChange;
    State m_state = State::awaitingRequest;
    RemoteRequestReader m_request;
    std::string m_pending;
    std::size_t m_written = 0;  ///< Of m_pending.
};

}  // namespace tidemark
