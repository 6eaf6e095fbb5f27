#pragma once

#include "Date.h"

#include <optional>

namespace tidemark {

/// Decides when to sweep again although nothing happens: when the next file comes of age, and some time after
/// a sweep that failed. A plain value without a clock of its own.
class FollowUp {
public:
    static constexpr Seconds shortestPause{
        60};  ///< After the first failure; doubled with each further one.
    static constexpr Seconds longestPause{3600};

    /// A sweep went well; `comingOfAge` is when the first of the files is due that were too young for it.
    void didSweep(std::optional<Date> comingOfAge, Date now);

    /// A sweep failed as a whole. The pause grows when that was another try, not when an event led to it.
    void didFail(Date now);

    /// It was found that a sweep is due at `due`. It is not to begin before `earliest`.
    void didPlan(std::optional<Date> due, Date earliest);

    /// Nothing is to happen, whatever was known.
    void cancel();

    std::optional<Date> due() const { return m_due; }

    /// Whether it is time; nothing is due any more then. The clock may have been set since.
    bool take(Date now);

private:
    std::optional<Date> m_due;
    bool m_wasTaken = false;  ///< What was due has begun and not ended yet.
    Seconds m_pause{0};  ///< How far the next try is from the last failure; 0 when all is well.
};

}  // namespace tidemark
