#pragma once

#include "FileURL.h"

#include <string>
#include <vector>

namespace tidemark::bench {

/// The command line of tidemark-bench.
struct Options {
    FileURL folder;  ///< Where the disk work is done.
    std::vector<std::string>
        others;  ///< For Google Benchmark, its defaults first; with the program's name.

    /// Throws std::invalid_argument when `--folder` has no value, filesystem_error when there is no such
    /// folder.
    static Options parse(int count, char** arguments);

    /// Prints ours and those of Google Benchmark.
    static void printHelp();
};

}  // namespace tidemark::bench
