#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tidemark {

/// Asks the program that serves a support folder, see RemoteServer, for one thing.
///
/// It waits without a time-out, since a sweep may take minutes; but a server that ends is noticed at once.
/// For one thread at a time. Failures throw filesystem_error naming the socket.
class RemoteClient {
public:
    struct Message {
        std::string text;
        bool isFinal = false;
    };

    /// Nothing if nobody serves there. Throws for other failures, such as a server of another user, or a file
    /// of that name that is no socket.
    static std::optional<RemoteClient> connect(const FileURL& supportFolder);

    /// To be called once. Throws for a request of more than 1 MiB (message_size). That the server has gone
    /// is told by `receive`.
    void send(std::string_view request);

    /// Waits for the next message. Nothing if the server went away; there was no final message then. Throws
    /// protocol_not_supported if the server is of a version with another protocol, and protocol_error if it
    /// speaks nonsense. Not to be called after the final message.
    std::optional<Message> receive();

private:
    RemoteClient(FileURL url, FileDescriptor socket);

    /// Whether the server said the first word.
    bool isGreeted();

    /// The next bytes, as many as `bytes` holds. False if the connection ends before.
    bool read(std::span<char> bytes);

    /// The same for a text of which the length is known.
    std::optional<std::string> readText(std::size_t length);

    FileURL m_url;
    FileDescriptor m_socket;
    bool m_isGreeted = false;
};

}  // namespace tidemark
