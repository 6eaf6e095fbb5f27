#include "RemotePeer.h"

#include <sys/socket.h>
#include <unistd.h>

namespace tidemark::RemotePeer {

bool isTrusted(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || size != sizeof peer)
        return false;
    return peer.uid == 0 || peer.uid == ::geteuid();
}

}  // namespace tidemark::RemotePeer
