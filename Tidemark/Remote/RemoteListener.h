#pragma once

#include "FileDescriptor.h"
#include "RemoteAddress.h"

#include <optional>

namespace tidemark {

/// The listening socket of a support folder and its file, which goes with it unless somebody has put another
/// in its place. For the holder of the folder's lock.
class RemoteListener {
public:
    enum class Outcome {
        accepted,
        refused,  ///< Another user's process, or no descriptor was left: its connection is closed.
        nobody,  ///< Nobody waits.
        notNow,  ///< The system is short of something; whoever waits goes on waiting.
    };

    struct Arrival {
        Outcome outcome = Outcome::nobody;
        FileDescriptor socket;  ///< Open only if accepted; it does not block.
    };

    /// A socket file that a killed process has left is replaced. Throws filesystem_error, file_exists if
    /// something else has that name, and system_error.
    explicit RemoteListener(const FileURL& supportFolder);
    ~RemoteListener();

    RemoteListener(const RemoteListener&) = delete;
    RemoteListener& operator=(const RemoteListener&) = delete;

    /// Whether clients find it: false once somebody has removed or replaced its file.
    bool isReachable() const { return m_file && m_address.file() == m_file; }

    int descriptor() const { return m_socket.get(); }

    /// Takes the next client in, without waiting.
    Arrival accept();

private:
    void removeStaleFile() const;
    void bind();

    /// Lets a client in on the descriptor that is kept for this, only to close the connection: so it is told
    /// at once. Returns the errno, ECONNABORTED when it is done.
    int turnAway();

    RemoteAddress m_address;
    FileDescriptor m_socket;
    FileDescriptor m_spare;
    std::optional<RemoteAddress::File> m_file;
};

}  // namespace tidemark
