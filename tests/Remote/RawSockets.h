#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"
#include "RemoteProtocol.h"

#include <string>
#include <string_view>

namespace tidemark {

/// A message as it goes over the socket.
std::string framed(RemoteProtocol::MessageKind kind, std::string_view text);

/// All that a well-behaved client says.
std::string wholeRequest(std::string_view text);

/// All that a well-behaved server says before its messages.
std::string greeting();

/// A client that says what a test wants, in the manner of a broken one. It never waits.
class RawClient {
public:
    /// Connects at once, throwing filesystem_error on failure.
    explicit RawClient(const FileURL& supportFolder);

    /// Whether all of it could be written.
    bool write(std::string_view bytes) const;

    /// What has arrived since the last call.
    std::string read() const;

    /// Whether the other side has closed; what has arrived before need not have been read.
    bool isClosed() const;

    void close() { m_socket.close(); }

private:
    FileDescriptor m_socket;
};

/// A server that serves one client with what a test wants.
class RawServer {
public:
    /// Listens at once, throwing filesystem_error on failure. The socket's file stays behind.
    explicit RawServer(const FileURL& supportFolder);

    /// Waits for a client, and for its first `length` bytes.
    void accept(std::size_t length);

    void write(std::string_view bytes) const;
    void closeConnection() { m_client.close(); }

private:
    FileDescriptor m_socket;
    FileDescriptor m_client;
};

}  // namespace tidemark
