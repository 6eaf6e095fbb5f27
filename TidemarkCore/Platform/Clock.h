#pragma once

#include "Date.h"

namespace tidemark {

/// Tells the time of day. Tests put a clock of their own in its place.
class Clock {
public:
    virtual ~Clock() = default;

    /// Safe from any thread.
    virtual Date now() const = 0;
};

/// The system's wall clock.
class SystemClock final : public Clock {
public:
    Date now() const override;
};

}  // namespace tidemark
