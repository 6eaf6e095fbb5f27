#pragma once

namespace tidemark::bench {

/// SIGINT, SIGTERM and SIGHUP end the measuring early, so that the temporary folders are still removed.
namespace Interruption {

void install();

/// Whether one of them has come.
bool hasCome();

}  // namespace Interruption

}  // namespace tidemark::bench
