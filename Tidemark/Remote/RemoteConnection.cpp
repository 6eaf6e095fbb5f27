#include "RemoteConnection.h"

#include "SystemCall.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

namespace tidemark {

namespace {

constexpr std::size_t mostBytesPerRead = 65'536;
constexpr std::size_t mostBytesPerWrite = 262'144;

}  // namespace

RemoteConnection::RemoteConnection(FileDescriptor socket, std::function<void()> onChange)
    : m_socket(std::move(socket))
    , m_onChange(std::move(onChange))
{
}

void RemoteConnection::greet()
{
    const ssize_t sent = uninterrupted([&] {
        return ::send(m_socket.get(), &RemoteProtocol::version, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    });
    // Who has left already may have made a request all the same, which reading tells.
    if (sent != 1 && errno != EPIPE)
        close();
}

std::optional<std::string> RemoteConnection::read()
{
    if (m_state == State::closed)
        return std::nullopt;
    std::array<char, mostBytesPerRead> bytes;
    const ssize_t size = uninterrupted(
        [&] { return ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT); });
    if (size < 0 && errno == EAGAIN)
        return std::nullopt;
    auto request = RemoteRequestReader::State::broken;
    if (size > 0)
        request = m_request.take({bytes.data(), static_cast<std::size_t>(size)});
    if (request == RemoteRequestReader::State::broken)
        close();
    if (request != RemoteRequestReader::State::complete)
        return std::nullopt;
    m_state = State::answering;
    return m_request.takeText();
}

void RemoteConnection::write()
{
    if (m_state == State::closed || !wantsToWrite())
        return;
    const std::size_t size = std::min(m_pending.size() - m_written, mostBytesPerWrite);
    const char* const from = m_pending.data() + m_written;
    const ssize_t written = uninterrupted(
        [&] { return ::send(m_socket.get(), from, size, MSG_DONTWAIT | MSG_NOSIGNAL); });
    if (written < 0 && errno != EAGAIN)
        return close();
    m_written += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    if (!wantsToWrite()) {
        std::exchange(m_pending, {});
        m_written = 0;
        if (m_state == State::finishing)
            return close();
    }
    m_onChange();
}

void RemoteConnection::sendInterim(std::string_view message)
{
    if (m_state != State::answering || m_pending.size() - m_written >= mostPending)
        return;
    append(RemoteProtocol::MessageKind::interim, message);
}

void RemoteConnection::sendFinal(std::string_view message)
{
    if (m_state != State::answering)
        return;
    m_state = State::finishing;
    append(RemoteProtocol::MessageKind::final, message);
}

void RemoteConnection::append(RemoteProtocol::MessageKind kind, std::string_view message)
{
    const auto header = RemoteProtocol::headerBytes(kind, message);
    m_pending.erase(0, std::exchange(m_written, 0));
    m_pending.reserve(m_pending.size() + header.size() + message.size());
    m_pending.append(header.data(), header.size());
    m_pending += message;
    write();
}

void RemoteConnection::abandon()
{
    if (m_state == State::answering)
        close();
}

void RemoteConnection::close()
{
    if (std::exchange(m_state, State::closed) == State::closed)
        return;
    std::exchange(m_pending, {});
    m_written = 0;
    m_onChange();
}

}  // namespace tidemark
