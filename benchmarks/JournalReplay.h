#pragma once

#include "Journal.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark::bench {

/// The texts of a journal while its last sweep went on, ready to be written.
class JournalReplay {
public:
    /// `journal` is the one after the sweep, of which there is at least one entry. Throws std::logic_error
    /// if the texts were not the ones that the encoder gives.
    explicit JournalReplay(const Journal& journal);

    /// The text with the last sweep's first `count` entries (at least one), in two pieces that are valid as
    /// long as the replay.
    std::array<std::string_view, 2> after(std::size_t count) const;

    std::size_t sizeAfter(std::size_t count) const;

private:
    void findEnds(std::size_t entries);

    std::string m_text;
    std::vector<std::size_t> m_ends;  // where each entry of the last sweep ends
};

}  // namespace tidemark::bench
