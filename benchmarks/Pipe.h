#pragma once

#include "FileDescriptor.h"

namespace tidemark::bench {

/// A pipe that programs which are started do not inherit by themselves.
struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;

    /// Throws system_error.
    static Pipe make();
};

}  // namespace tidemark::bench
