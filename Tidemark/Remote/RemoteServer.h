#pragma once

#include "FileURL.h"
#include "RemoteListener.h"
#include "RemotePoller.h"

#include <QSocketNotifier>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tidemark {

class RemoteConnection;
class RemoteReply;

/// Answers the command line in the name of a support folder, over the socket in that folder.
///
/// Only for the holder of the folder's lock (SupportLock), on a thread with a running Qt event loop, where
/// everything happens. It never waits for a client, keeps no timer, and wakes up only for what a client does.
/// Only processes of the same user and of root are let in. Whatever a client sends or leaves unsaid harms
/// nobody but itself: when all places are taken, the connection that has been silent for longest has to go.
class RemoteServer {
public:
    /// Called once for each request. It must neither throw nor destroy the server. A reply that is not kept
    /// closes the connection.
    using Handler = std::function<void(std::string request, std::shared_ptr<RemoteReply> reply)>;

    /// How many clients there may be at a time.
    static constexpr std::size_t mostConnections = 64;

    /// Makes the socket, replacing one that a killed process has left. Throws filesystem_error naming it,
    /// file_exists if something that is no socket has its name, and system_error.
    RemoteServer(const FileURL& supportFolder, Handler handler);

    /// Removes the socket, unless another has taken its place, and closes all connections.
    ~RemoteServer();

    RemoteServer(const RemoteServer&) = delete;
    RemoteServer& operator=(const RemoteServer&) = delete;

    /// Whether clients find it: false once somebody has removed or replaced the socket's file.
    bool isReachable() const { return m_listener.isReachable(); }

    /// Waits until every final message that was given is written, but no longer than this. Returns whether
    /// they all are; what clients that have left did not read does not count. Calls no handler.
    bool flush(std::chrono::milliseconds atMost);

private:
    using Clock = std::chrono::steady_clock;
    using Finishing = std::vector<std::shared_ptr<RemoteConnection>>;
    using Connections = std::map<std::uint64_t, std::shared_ptr<RemoteConnection>>;

    void serve();
    void serve(const RemotePoller::Event& event);
    void acceptClients();
    void takeIn(FileDescriptor socket);
    void read(const std::shared_ptr<RemoteConnection>& connection);

    /// Whether there is a place for another connection, after a silent one was dropped if need be.
    bool makeRoom();

    void connectionChanged(std::uint64_t id);
    Finishing finishingConnections() const;

    /// Waits until one of them takes more, and gives it some. Whether there is sense in trying again.
    static bool writeOnce(const Finishing& connections, Clock::time_point deadline);

    Handler m_handler;
    RemotePoller m_poller;
    Connections m_connections;  ///< The oldest first.
    std::uint64_t m_lastID;
    bool m_hasLeftClientsWaiting = false;  ///< Because the system was short of something.
    RemoteListener m_listener;
    QSocketNotifier m_notifier;
};

}  // namespace tidemark
