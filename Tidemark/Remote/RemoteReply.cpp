#include "RemoteReply.h"

#include "RemoteConnection.h"

#include <utility>

namespace tidemark {

RemoteReply::RemoteReply(std::weak_ptr<RemoteConnection> connection)
    : m_connection(std::move(connection))
{
}

RemoteReply::~RemoteReply()
{
    if (const auto connection = m_connection.lock())
        connection->abandon();
}

void RemoteReply::send(std::string_view message)
{
    if (const auto connection = m_connection.lock())
        connection->sendInterim(message);
}

void RemoteReply::finish(std::string_view message)
{
    if (const auto connection = m_connection.lock())
        connection->sendFinal(message);
}

bool RemoteReply::isConnected() const
{
    const auto connection = m_connection.lock();
    return connection && connection->state() != RemoteConnection::State::closed;
}

}  // namespace tidemark
