#pragma once

#include "Date.h"

#include <functional>

namespace tidemark {

/// Rings once after some time, in which a suspend counts, too. For the main thread.
class Countdown {
public:
    virtual ~Countdown() = default;

    /// Calls `ring` from the event loop when `duration`, more than 0, has gone by; in place of what was started
    /// before. What is over when the machine wakes up rings then.
    virtual void start(Seconds duration, std::function<void()> ring) = 0;
    virtual void cancel() = 0;
};

}  // namespace tidemark
