#include "RemoteClient.h"

#include "RemoteAddress.h"
#include "RemotePeer.h"
#include "RemoteProtocol.h"
#include "SystemCall.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

namespace tidemark {

namespace {

constexpr const char* cannotConnect = "cannot connect to";
constexpr const char* cannotRead = "cannot read from";
constexpr std::size_t mostBytesPerRead = 1 << 20;

/// Whether an error says that the other side has closed.
bool isGone(int error)
{
    return error == EPIPE || error == ECONNRESET;
}

}  // namespace

RemoteClient::RemoteClient(FileURL url, FileDescriptor socket)
    : m_url(std::move(url))
    , m_socket(std::move(socket))
{
}

std::optional<RemoteClient> RemoteClient::connect(const FileURL& supportFolder)
{
    const std::optional<RemoteAddress> address = RemoteAddress::find(supportFolder);
    if (!address)
        return std::nullopt;
    FileDescriptor socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    if (!socket.isOpen())
        fail(cannotConnect, address->url(), errno);
    const int error = address->connect(socket.get());
    // Nobody can serve there; to wait for somebody would be in vain.
    if (const auto file = address->file(); error == ECONNREFUSED && file && !file->isSocket)
        fail("not a socket:", address->url(), ENOTSOCK);
    if (error == ENOENT || error == ECONNREFUSED)
        return std::nullopt;
    if (error != 0)
        fail(cannotConnect, address->url(), error);
    if (!RemotePeer::isTrusted(socket.get()))
        fail("another user serves", address->url(), EPERM);
    return RemoteClient{address->url(), std::move(socket)};
}

void RemoteClient::send(std::string_view request)
{
    if (request.size() > RemoteProtocol::longestRequest)
        fail("the request is too long for", m_url, EMSGSIZE);
    const auto header = RemoteProtocol::headerBytes(RemoteProtocol::MessageKind::request, request);
    std::string bytes{RemoteProtocol::version};
    bytes.append(header.data(), header.size()).append(request);
    for (std::string_view rest = bytes; !rest.empty();) {
        const ssize_t sent = uninterrupted(
            [&] { return ::send(m_socket.get(), rest.data(), rest.size(), MSG_NOSIGNAL); });
        if (sent < 0 && isGone(errno))
            return;  // It may have said why before it left.
        if (sent < 0)
            fail("cannot write to", m_url, errno);
        rest.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::optional<RemoteClient::Message> RemoteClient::receive()
{
    std::array<char, RemoteProtocol::headerSize> bytes;
    if (!isGreeted() || !read(bytes))
        return std::nullopt;
    const auto header = RemoteProtocol::header({bytes.data(), bytes.size()});
    const bool isFinal = header.is(RemoteProtocol::MessageKind::final);
    if (!isFinal && !header.is(RemoteProtocol::MessageKind::interim))
        fail(cannotRead, m_url, EPROTO);
    std::optional<std::string> text = readText(header.length);
    if (!text)
        return std::nullopt;
    return Message{std::move(*text), isFinal};
}

bool RemoteClient::isGreeted()
{
    std::array<char, 1> version;
    if (!m_isGreeted && !read(version))
        return false;
    if (!m_isGreeted && version.front() != RemoteProtocol::version)
        fail("another version of Tidemark serves", m_url, EPROTONOSUPPORT);
    m_isGreeted = true;
    return true;
}

bool RemoteClient::read(std::span<char> bytes)
{
    while (!bytes.empty()) {
        const ssize_t size =
            uninterrupted([&] { return ::recv(m_socket.get(), bytes.data(), bytes.size(), 0); });
        if (size == 0 || (size < 0 && isGone(errno)))
            return false;
        if (size < 0)
            fail(cannotRead, m_url, errno);
        bytes = bytes.subspan(static_cast<std::size_t>(size));
    }
    return true;
}

std::optional<std::string> RemoteClient::readText(std::size_t length)
{
    std::string text;
    while (text.size() < length) {
        // Memory is taken as the text arrives, not for what is merely announced.
        const std::size_t start = text.size();
        text.resize(std::min(length, start + mostBytesPerRead));
        if (!read(std::span{text}.subspan(start)))
            return std::nullopt;
    }
    return text;
}

}  // namespace tidemark
