#include "DrainPace.h"

#include <algorithm>

namespace tidemark {

namespace {

/// More than this within one pause is a storm. A queue holds 16,384 events.
constexpr std::size_t storm = 256;

}  // namespace

DrainPace::Duration DrainPace::pauseAfter(std::size_t events)
{
    if (events == 0) {
        m_pause = shortest;
        return Duration::zero();
    }
    const Duration pause = events > storm ? shortest : m_pause;
    m_pause = std::min(2 * pause, longest);
    return pause;
}

void DrainPace::rested(std::chrono::nanoseconds time)
{
    if (time >= longest)
        m_pause = shortest;
}

}  // namespace tidemark
