#include "Pipe.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace tidemark::bench {

Pipe Pipe::make()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(systemError(errno), "pipe2");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace tidemark::bench
