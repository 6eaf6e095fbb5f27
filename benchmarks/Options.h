#pragma once

#include "Date.h"
#include "FileURL.h"

#include <string>
#include <vector>

namespace tidemark::bench {

/// The command line of tidemark-bench.
struct Options {
    FileURL folder;  ///< Where the disk work is done.
    Seconds rest{10};  ///< For how long programs that have nothing to do are watched.
    std::vector<std::string>
        others;  ///< For Google Benchmark, its defaults first; with the program's name.

    /// Throws std::invalid_argument when an option has no value or a wrong one, filesystem_error when
    /// there is no such folder.
    static Options parse(int count, char** arguments);

    /// Prints ours and those of Google Benchmark.
    static void printHelp();
};

}  // namespace tidemark::bench
