#pragma once

#include "Measured.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidemark::bench {

/// Some work of ours, measured in turn with the yardsticks for it.
class Comparison {
public:
    /// Does the work once and says what it cost, without what had to be prepared.
    using Measure = std::function<Measured()>;

    struct Yardstick {
        std::string name;
        Measure measure;
        std::optional<double> bar = std::nullopt;  ///< How many times its wall time ours may take.
    };

    struct Subject {
        std::string work;
        std::size_t size = 0;
        std::string place;
        std::optional<std::size_t> memoryBar = std::nullopt;  ///< In bytes.
    };

    Comparison(Subject subject, Measure ours, std::vector<Yardstick> yardsticks);

    const Subject& subject() const { return m_subject; }
    const std::vector<Yardstick>& yardsticks() const { return m_yardsticks; }

    /// Such as "preview/100000/ext4": what filters choose by.
    std::string name() const;

    /// Measures each once more, another one first each time. Returns ours. Throws what a measure throws;
    /// nothing of this turn is kept then.
    Measured measureInTurn();

    bool isMeasured() const { return !m_samples.front().empty(); }

    /// Medians; only once measured.
    Measured ours() const { return median(0); }
    Measured yardstick(std::size_t index) const { return median(index + 1); }

private:
    Measured median(std::size_t contestant) const;

    Subject m_subject;
    std::vector<Yardstick> m_yardsticks;
    std::vector<Measure> m_contestants;  // ours, then the yardsticks
    std::vector<std::vector<Measured>> m_samples;  // per contestant
};

}  // namespace tidemark::bench
