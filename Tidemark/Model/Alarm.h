#pragma once

#include "Date.h"

#include <functional>

namespace tidemark {

/// Rings once at a moment of the wall clock. For the main thread.
class Alarm {
public:
    virtual ~Alarm() = default;

    /// What to call when it rings. It may ring too early after somebody has set the clock, so that what
    /// depends on the present can be decided anew: compare with the clock, and set it again.
    virtual void onRing(std::function<void()> ring) = 0;

    /// Rings at `date` or, when that is past, at once; in place of what was set before.
    virtual void set(Date date) = 0;
    virtual void cancel() = 0;
};

}  // namespace tidemark
