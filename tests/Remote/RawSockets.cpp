#include "RawSockets.h"

#include "RemoteAddress.h"
#include "SystemCall.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <vector>

namespace tidemark {

std::string framed(RemoteProtocol::MessageKind kind, std::string_view text)
{
    const auto header = RemoteProtocol::headerBytes(kind, text);
    return std::string{header.data(), header.size()}.append(text);
}

std::string wholeRequest(std::string_view text)
{
    return RemoteProtocol::version + framed(RemoteProtocol::MessageKind::request, text);
}

std::string greeting()
{
    return {RemoteProtocol::version};
}

RawClient::RawClient(const FileURL& supportFolder)
    : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const RemoteAddress address{supportFolder};
    if (const int error = address.connect(m_socket.get()); error != 0)
        fail("cannot connect to", address.url(), error);
}

bool RawClient::write(std::string_view bytes) const
{
    return ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
        == static_cast<ssize_t>(bytes.size());
}

std::string RawClient::read() const
{
    std::string all;
    std::array<char, 4096> bytes;
    for (;;) {
        const ssize_t size = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (size <= 0)
            return all;
        all.append(bytes.data(), static_cast<std::size_t>(size));
    }
}

bool RawClient::isClosed() const
{
    pollfd poll{m_socket.get(), POLLRDHUP, 0};
    return ::poll(&poll, 1, 0) == 1 && (poll.revents & (POLLRDHUP | POLLHUP)) != 0;
}

RawServer::RawServer(const FileURL& supportFolder)
    : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const RemoteAddress address{supportFolder};
    if (const int error = address.bind(m_socket.get()); error != 0)
        fail("cannot bind", address.url(), error);
    if (::listen(m_socket.get(), 1) != 0)
        fail("cannot listen on", address.url(), errno);
}

void RawServer::accept(std::size_t length)
{
    m_client = FileDescriptor{::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC)};
    ASSERT_TRUE(m_client.isOpen());
    if (length == 0)
        return;
    std::vector<char> bytes(length);
    ASSERT_EQ(
        ::recv(m_client.get(), bytes.data(), length, MSG_WAITALL), static_cast<ssize_t>(length));
}

void RawServer::write(std::string_view bytes) const
{
    ASSERT_EQ(::send(m_client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
        static_cast<ssize_t>(bytes.size()));
}

}  // namespace tidemark
