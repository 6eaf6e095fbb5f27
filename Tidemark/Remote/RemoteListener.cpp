#include "RemoteListener.h"

#include "RemotePeer.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace tidemark {

namespace {

constexpr const char* cannotServe = "cannot listen on";
constexpr mode_t userOnly = 0600;

/// A descriptor that is good for nothing but to be closed when there is no other left.
FileDescriptor spareDescriptor(const FileDescriptor& of)
{
    return FileDescriptor{::fcntl(of.get(), F_DUPFD_CLOEXEC, 0)};
}

/// Not open, with errno set, if there is none or it cannot be let in.
FileDescriptor nextClient(const FileDescriptor& listener)
{
    return FileDescriptor{uninterrupted(
        [&] { return ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK); })};
}

/// Only ECONNABORTED says that there is one client less in the line. After any other failure the same client
/// would be met again and again.
RemoteListener::Outcome outcomeOf(int error)
{
    switch (error) {
    case EAGAIN:
        return RemoteListener::Outcome::nobody;
    case ECONNABORTED:
        return RemoteListener::Outcome::refused;
    default:
        return RemoteListener::Outcome::notNow;
    }
}

}  // namespace

RemoteListener::RemoteListener(const FileURL& supportFolder)
    : m_address(supportFolder)
    , m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    if (!m_socket.isOpen())
        fail(cannotServe, m_address.url(), errno);
    removeStaleFile();
    bind();
    m_spare = spareDescriptor(m_socket);
}

RemoteListener::~RemoteListener()
{
    // The socket is still open, so no other file can have got its inode's number.
    if (isReachable())
        m_address.remove();
}

void RemoteListener::removeStaleFile() const
{
    const std::optional<RemoteAddress::File> file = m_address.file();
    if (!file)
        return;
    if (!file->isSocket)
        fail("not a socket:", m_address.url(), EEXIST);
    if (const int error = m_address.remove(); error != 0 && error != ENOENT)
        fail("cannot remove the stale socket", m_address.url(), error);
}

void RemoteListener::bind()
{
    // Linux makes the file with the mode that the socket has, so it is never open to others, not even for
    // a moment.
    if (::fchmod(m_socket.get(), userOnly) != 0)
        fail(cannotServe, m_address.url(), errno);
    if (const int error = m_address.bind(m_socket.get()); error != 0)
        fail(cannotServe, m_address.url(), error);
    m_file = m_address.file();
    if (::listen(m_socket.get(), SOMAXCONN) != 0) {
        const int error = errno;
        m_address.remove();
        fail(cannotServe, m_address.url(), error);
    }
}

RemoteListener::Arrival RemoteListener::accept()
{
    if (!m_spare.isOpen())
        m_spare = spareDescriptor(m_socket);
    FileDescriptor client = nextClient(m_socket);
    if (client.isOpen()) {
        const bool isWelcome = RemotePeer::isTrusted(client.get());
        return isWelcome ? Arrival{Outcome::accepted, std::move(client)}
                         : Arrival{Outcome::refused, {}};
    }
    // Whether anybody waits is not even looked at without a free descriptor.
    const int error = errno == EMFILE && m_spare.isOpen() ? turnAway() : errno;
    return {outcomeOf(error), {}};
}

int RemoteListener::turnAway()
{
    m_spare.close();
    FileDescriptor client = nextClient(m_socket);
    const int error = client.isOpen() ? ECONNABORTED : errno;
    client.close();
    m_spare = spareDescriptor(m_socket);
    return error;
}

}  // namespace tidemark
