#pragma once

namespace tidemark {

/// Who is at the other end of a local socket. Safe from any thread.
namespace RemotePeer {

/// Whether it is this process's own effective user, or root. What counts is who it was when it began to
/// listen or connected. False if the kernel does not tell.
bool isTrusted(int socket);

}  // namespace RemotePeer

}  // namespace tidemark
