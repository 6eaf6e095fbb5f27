#pragma once

#include <chrono>
#include <cstddef>

namespace tidemark {

/// How long to leave the kernel's event queues alone after they were emptied, so that a stream of events
/// costs few wake-ups: short in a storm, which would fill a queue, longer while little happens.
class DrainPace {
public:
    using Duration = std::chrono::milliseconds;

    static constexpr Duration shortest{20};
    static constexpr Duration longest{160};

    /// Zero after a look that found nothing: the next event is to be seen at once.
    Duration pauseAfter(std::size_t events);

    /// Nothing happened for so long; what comes next may be the first of many.
    void rested(std::chrono::nanoseconds time);

private:
    Duration m_pause = shortest;
};

}  // namespace tidemark
