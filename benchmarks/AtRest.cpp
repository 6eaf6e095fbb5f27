#include "AtRest.h"

#include "Interruption.h"
#include "Stopwatch.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace tidemark::bench {

namespace {

void sleep(std::chrono::milliseconds time)
{
    std::this_thread::sleep_for(time);
    if (Interruption::hasCome())
        throw std::runtime_error("interrupted");
}

/// Waits until it has not been woken for a while, or for half a minute.
void settle(const RunningProcess& process)
{
    constexpr std::chrono::milliseconds look{100};
    constexpr int quietLooks = 20;
    constexpr int looks = 300;
    auto before = ContextSwitches::of(process.id());
    for (int count = 0, quiet = 0; count < looks && quiet < quietLooks; ++count) {
        sleep(look);
        auto now = ContextSwitches::of(process.id());
        quiet = now.since(before) == 0 ? quiet + 1 : 0;
        before = std::move(now);
    }
}

}  // namespace

Idleness measureAtRest(const RunningProcess& process, Seconds rest)
{
    settle(process);
    const auto before = ContextSwitches::of(process.id());
    const Stopwatch stopwatch;
    while (stopwatch.elapsed().wall < rest)
        sleep(std::chrono::milliseconds{100});
    const std::uint64_t wakeUps = ContextSwitches::of(process.id()).since(before);
    return {.rest = stopwatch.elapsed().wall,
        .wakeUps = wakeUps,
        .memory = ProcessMemory::of(process.id())};
}

}  // namespace tidemark::bench
