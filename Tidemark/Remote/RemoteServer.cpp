#include "RemoteServer.h"

#include "RemoteConnection.h"
#include "RemoteReply.h"
#include "SystemCall.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace tidemark {

namespace {

constexpr std::uint64_t listenerID = 0;
constexpr int mostClientsInARow = 64;

/// So that a deadline can be told for any time to wait.
constexpr std::chrono::milliseconds longestFlush = std::chrono::hours{1};

int pollTimeout(std::chrono::steady_clock::time_point deadline)
{
    const auto left = deadline - std::chrono::steady_clock::now();
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left);
    return static_cast<int>(std::max(milliseconds, std::chrono::milliseconds{0}).count());
}

}  // namespace

RemoteServer::RemoteServer(const FileURL& supportFolder, Handler handler)
    : m_handler(std::move(handler))
    , m_lastID(listenerID)
    , m_listener(supportFolder)
    , m_notifier(m_poller.descriptor(), QSocketNotifier::Read)
{
    if (!m_poller.add(m_listener.descriptor(), listenerID, RemotePoller::Interest::arrivals))
        throw std::system_error{systemError(errno), "cannot watch the socket"};
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { serve(); });
}

RemoteServer::~RemoteServer() = default;

void RemoteServer::serve()
{
    for (const RemotePoller::Event& event : m_poller.events())
        serve(event);
}

void RemoteServer::serve(const RemotePoller::Event& event)
{
    if (event.id == listenerID)
        return acceptClients();
    const auto found = m_connections.find(event.id);
    if (found == m_connections.end())
        return;
    const std::shared_ptr<RemoteConnection> connection = found->second;
    if (event.isWritable)
        connection->write();
    if (event.isReadable)
        read(connection);
}

void RemoteServer::acceptClients()
{
    m_hasLeftClientsWaiting = false;
    for (int count = 0; count < mostClientsInARow; ++count) {
        RemoteListener::Arrival arrival = m_listener.accept();
        switch (arrival.outcome) {
        case RemoteListener::Outcome::accepted:
            takeIn(std::move(arrival.socket));
            break;
        case RemoteListener::Outcome::refused:
            break;
        case RemoteListener::Outcome::nobody:
            return;
        case RemoteListener::Outcome::notNow:
            m_hasLeftClientsWaiting = true;
            return;
        }
    }
    // The others have waited; who still stands in line is told once more.
    m_poller.change(m_listener.descriptor(), listenerID, RemotePoller::Interest::arrivals);
}

void RemoteServer::takeIn(FileDescriptor socket)
{
    if (!makeRoom())
        return;
    const std::uint64_t id = ++m_lastID;
    if (!m_poller.add(socket.get(), id, RemotePoller::Interest::reading))
        return;
    const auto connection = std::make_shared<RemoteConnection>(
        std::move(socket), [this, id] { connectionChanged(id); });
    m_connections.emplace(id, connection);
    connection->greet();
    // Most have said what they want already, and then they cannot be taken for silent ones.
    read(connection);
}

void RemoteServer::read(const std::shared_ptr<RemoteConnection>& connection)
{
    if (std::optional<std::string> request = connection->read())
        m_handler(std::move(*request), std::make_shared<RemoteReply>(connection));
}

bool RemoteServer::makeRoom()
{
    if (m_connections.size() < mostConnections)
        return true;
    const auto silent = std::ranges::find_if(m_connections, [](const auto& entry) {
        return entry.second->state() == RemoteConnection::State::awaitingRequest;
    });
    if (silent == m_connections.end())
        return false;
    const std::shared_ptr<RemoteConnection> connection = silent->second;
    connection->close();
    return true;
}

void RemoteServer::connectionChanged(std::uint64_t id)
{
    const RemoteConnection& connection = *m_connections.at(id);
    if (connection.state() != RemoteConnection::State::closed) {
        m_poller.change(connection.descriptor(), id,
            connection.wantsToWrite() ? RemotePoller::Interest::readingAndWriting
                                      : RemotePoller::Interest::reading);
        return;
    }
    m_poller.remove(connection.descriptor());
    m_connections.erase(id);
    if (m_hasLeftClientsWaiting)
        m_poller.change(m_listener.descriptor(), listenerID, RemotePoller::Interest::arrivals);
}

RemoteServer::Finishing RemoteServer::finishingConnections() const
{
    Finishing finishing;
    for (const auto& [id, connection] : m_connections) {
        if (connection->state() == RemoteConnection::State::finishing)
            finishing.push_back(connection);
    }
    return finishing;
}

bool RemoteServer::flush(std::chrono::milliseconds atMost)
{
    const Clock::time_point deadline = Clock::now() + std::min(atMost, longestFlush);
    for (bool isTimeLeft = true; isTimeLeft;) {
        isTimeLeft = Clock::now() < deadline;
        const Finishing finishing = finishingConnections();
        if (finishing.empty() || !writeOnce(finishing, deadline))
            break;
    }
    return finishingConnections().empty();
}

bool RemoteServer::writeOnce(const Finishing& connections, Clock::time_point deadline)
{
    std::vector<pollfd> sockets;
    sockets.reserve(connections.size());
    for (const auto& connection : connections)
        sockets.push_back({connection->descriptor(), POLLOUT, 0});
    if (::poll(sockets.data(), sockets.size(), pollTimeout(deadline)) < 0)
        return errno == EINTR;
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        if (sockets[i].revents != 0)
            connections[i]->write();
    }
    return true;
}

}  // namespace tidemark
