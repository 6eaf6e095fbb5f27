#pragma once

#include "Date.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tidemark::bench {

/// For how long some work of ours holds the main thread, measured in turn with an event loop that has nothing
/// to do.
class Responsiveness {
public:
    /// Does the work some times and says how long the loop was held; at least one value.
    using Measure = std::function<std::vector<Seconds>()>;

    struct Subject {
        std::string work;
        std::string each;  ///< What one value is of, such as "longest turn of each sweep".
        std::size_t size = 0;  ///< Entries in the journal.
        std::string place;
        bool isOnce = false;  ///< Takes so long, and gives so many values, that it is not repeated.
    };

    /// Of all values of all repetitions.
    struct Spread {
        std::size_t count = 0;
        Seconds median{0};
        Seconds percentile99{
            0};  ///< The least that 99 of 100 values do not exceed: of few values the longest.
        Seconds longest{0};
    };

    /// For how long it may be held, 99 times of 100.
    static constexpr Seconds bar{0.016};

    Responsiveness(Subject subject, Measure ours, Measure emptyLoop);

    const Subject& subject() const { return m_subject; }

    /// Such as "launch/100000/ext4": what filters choose by.
    std::string name() const;

    /// Measures both once more. Returns the sum of ours. Throws what a measure throws; nothing of this turn is
    /// kept then.
    Seconds measureInTurn();

    bool isMeasured() const { return !m_ours.empty(); }

    Spread ours() const { return spreadOf(m_ours); }
    Spread emptyLoop() const { return spreadOf(m_emptyLoop); }

private:
    static Spread spreadOf(std::vector<Seconds> values);

    Subject m_subject;
    Measure m_measureOurs;
    Measure m_measureEmptyLoop;
    std::vector<Seconds> m_ours;
    std::vector<Seconds> m_emptyLoop;
};

}  // namespace tidemark::bench
