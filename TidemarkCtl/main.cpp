#include "CommandRunner.h"

#include <span>

int main(int argc, char* argv[])
{
    return tidemark::runCommandLine(
        std::span<const char* const>{argv, static_cast<std::size_t>(argc)}.subspan(argc > 0));
}
