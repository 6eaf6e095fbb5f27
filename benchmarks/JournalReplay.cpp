#include "JournalReplay.h"

#include "JSONCoders.h"

#include <stdexcept>

namespace tidemark::bench {

JournalReplay::JournalReplay(const Journal& journal)
    : m_text(JSONCoders::encode(journal))
{
    findEnds(journal.sweeps.back().entries.size());

    Journal begun = journal;
    begun.sweeps.back().entries.resize(1);
    const auto [text, rest] = after(1);
    if (JSONCoders::encode(begun) != std::string(text).append(rest))
        throw std::logic_error("the journal's text is not laid out as expected");
}

void JournalReplay::findEnds(std::size_t entries)
{
    constexpr std::string_view list = "\"entries\" : [";
    constexpr std::string_view endOfEntry = "\n        }";
    std::size_t place = m_text.rfind(list);
    for (std::size_t i = 0; i < entries; ++i) {
        place = m_text.find(endOfEntry, place);
        if (place == std::string::npos)
            throw std::logic_error("the journal's text is not laid out as expected");
        place += endOfEntry.size();
        m_ends.push_back(place);
    }
}

std::array<std::string_view, 2> JournalReplay::after(std::size_t count) const
{
    const std::string_view text = m_text;
    return {text.substr(0, m_ends[count - 1]), text.substr(m_ends.back())};
}

std::size_t JournalReplay::sizeAfter(std::size_t count) const
{
    return m_text.size() - m_ends.back() + m_ends[count - 1];
}

}  // namespace tidemark::bench
