#include "TimeSource.h"

namespace tidemark {

TimeSource::Instant SteadyTime::now() const
{
    return std::chrono::steady_clock::now();
}

void SteadyTime::sleep(Sleeper& sleeper, std::unique_lock<std::mutex>& lock, Instant deadline)
{
    sleeper.wake.wait_until(lock, deadline);
}

}  // namespace tidemark
