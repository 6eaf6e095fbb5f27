#pragma once

#include "TimeSource.h"

#include <optional>

namespace tidemark {

/// Decides when changes are delivered: the first after a quiet time at once, what follows together, one
/// window after the delivery before.
///
/// A plain value without a clock of its own.
class Coalescer {
public:
    using Instant = TimeSource::Instant;

    explicit Coalescer(Instant::duration window)
        : m_window(window)
    {
    }

    /// Something changed.
    void note(Instant now);

    /// When the next delivery is due; nothing while there is nothing to deliver.
    std::optional<Instant> due() const { return m_due; }

    /// Whether to deliver now; counts as the delivery if so.
    bool take(Instant now);

    /// The same ahead of time.
    bool takeEarly(Instant now);

private:
    Instant::duration m_window;
    std::optional<Instant> m_due;
    std::optional<Instant> m_lastDelivery;
};

}  // namespace tidemark
