// tidemark-bench-tree FOLDER: watches a folder with all below, says in how many seconds it knew them all, and
// goes on watching until it is ended. The folders may be more than the system's share for one program.

#include "FolderWatcher.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

using namespace tidemark;

static bool isComplete(const FolderWatcher& watcher)
{
    return std::ranges::all_of(watcher.status(),
        [](const WatchStatus& status) { return status.coverage == WatchStatus::Coverage::full; });
}

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fputs("usage: tidemark-bench-tree FOLDER\n", stderr);
        return 2;
    }
    constexpr std::size_t many = 1'000'000;
    FolderWatcher watcher(
        {FileURL::directory(arguments[1])}, Seconds{1}, [] {}, {.watchLimit = many});
    const auto before = std::chrono::steady_clock::now();
    watcher.start();
    watcher.settle();
    const Seconds taken = std::chrono::steady_clock::now() - before;
    if (!isComplete(watcher)) {
        std::fputs("tidemark-bench-tree: not all folders can be watched\n", stderr);
        return 1;
    }
    std::printf("%.6f seconds\n", taken.count());
    std::fflush(stdout);
    for (;;)
        ::pause();
}
