#pragma once

#include <cstdio>
#include <cstdlib>

namespace tidemark {

/// Ends the process, as a fuzzer wants it, unless `holds`. `promise` says what was to hold.
inline void require(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace tidemark
