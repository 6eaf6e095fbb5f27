#pragma once

#include "Date.h"
#include "Lazy.h"
#include "ProcessFacts.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tidemark::bench {

/// What a process costs that has nothing to do. A plain value.
struct Idleness {
    Seconds rest{0};  ///< For how long it was watched.
    std::uint64_t wakeUps = 0;  ///< Of all its threads, in that time.
    ProcessMemory memory;
    std::optional<Seconds> preparation = std::nullopt;  ///< What it took to get there.
};

/// A program of ours at rest, measured after an empty one in the same run. Not repeated: it waits long, and the
/// figures hardly vary.
class IdleCase {
public:
    using Measure = std::function<Idleness()>;

    struct Subject {
        std::string work;
        std::size_t size = 0;
        std::string place;
        std::optional<std::size_t> residentBar =
            std::nullopt;  ///< In bytes; without it nothing is asked.
        std::string emptyProgram = "empty Qt program";
    };

    static constexpr double unsharedBar = 2;  ///< Times the empty program's.

    /// `emptyProgram` is measured once for all cases that share it.
    IdleCase(Subject subject, Measure ours, Lazy<Idleness> emptyProgram);

    const Subject& subject() const { return m_subject; }

    /// Such as "watch at rest/0/ext4": what filters choose by.
    std::string name() const;

    /// Returns for how long it has rested. Throws what a measure throws.
    Seconds measure();

    bool isMeasured() const { return m_ours.has_value(); }
    const Idleness& ours() const { return *m_ours; }
    const Idleness& emptyProgram() const { return m_emptyProgram.get(); }

private:
    Subject m_subject;
    Measure m_measure;
    Lazy<Idleness> m_emptyProgram;
    std::optional<Idleness> m_ours;
};

}  // namespace tidemark::bench
