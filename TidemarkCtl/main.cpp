#include "CommandRunner.h"

#include <malloc.h>

#include <span>

/// Has large blocks given back to the system when they are freed. Left to itself, glibc keeps blocks of the
/// size that was freed once, and the lists of a large folder, which follow one another, would add up.
static void giveBackLargeBlocks()
{
    constexpr int large = 1 << 20;
    ::mallopt(M_MMAP_THRESHOLD, large);
}

int main(int argc, char* argv[])
{
    giveBackLargeBlocks();
    return tidemark::runCommandLine(
        std::span<const char* const>{argv, static_cast<std::size_t>(argc)}.subspan(argc > 0));
}
