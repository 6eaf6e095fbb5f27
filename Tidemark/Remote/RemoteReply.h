#pragma once

#include <memory>
#include <string_view>

namespace tidemark {

class RemoteConnection;

/// The answer to one request, for as long as it takes.
///
/// It may outlive the connection and the server; then, and after the final message, everything here does
/// nothing. Destroying it without a final message closes the connection, and the client learns that there
/// is no answer. For the server's thread.
class RemoteReply {
public:
    explicit RemoteReply(std::weak_ptr<RemoteConnection> connection);
    ~RemoteReply();

    RemoteReply(const RemoteReply&) = delete;
    RemoteReply& operator=(const RemoteReply&) = delete;

    /// Sends an interim message, unless the client is far behind with reading (1 MiB): then it never gets
    /// this one. Throws length_error for 4 GiB or more.
    void send(std::string_view message);

    /// Sends the final message, however long it takes the client to read it, and closes the connection
    /// after that. Throws length_error for 4 GiB or more.
    void finish(std::string_view message);

    /// Whether the client is there to be written to, as far as the event loop has noticed. False once the
    /// final message is written.
    bool isConnected() const;

private:
    std::weak_ptr<RemoteConnection> m_connection;
};

}  // namespace tidemark
