#include "Stopwatch.h"

#include <ctime>

namespace tidemark::bench {

static Seconds cpuTimeOfThisProcess()
{
    struct timespec time;
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return Seconds(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9);
}

Stopwatch::Stopwatch()
    : m_wall(std::chrono::steady_clock::now())
    , m_cpu(cpuTimeOfThisProcess())
{
}

Measured Stopwatch::elapsed() const
{
    const auto wall = std::chrono::steady_clock::now();
    return {.wall = wall - m_wall, .cpu = cpuTimeOfThisProcess() - m_cpu};
}

Measured Stopwatch::time(const std::function<void()>& work)
{
    const Stopwatch stopwatch;
    work();
    return stopwatch.elapsed();
}

}  // namespace tidemark::bench
