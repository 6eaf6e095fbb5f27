#include "Journal.h"

namespace tidemark {

/// About how many bytes the text will have.
static std::size_t estimatedSize(const Journal& journal)
{
    constexpr std::size_t perSweep = 200;
    constexpr std::size_t perEntry = 140;
    std::size_t size = perSweep;
    for (const SweepRecord& sweep : journal.sweeps) {
        size += perSweep;
        for (const JournalEntry& entry : sweep.entries)
            size += perEntry + entry.from.size() + entry.to.size();
    }
    return size;
}

void Journal::encode(JSONEncoder& encoder) const
{
    encoder.reserve(estimatedSize(*this));
    encoder.object([&] { encoder.member("sweeps", sweeps); });
}

Journal Journal::decode(const JSONDecoder& decoder)
{
    return {.sweeps = decoder["sweeps"].list<SweepRecord>()};
}

bool Journal::verify(JSONVerifier& verifier)
{
    return verifier.object(
        [&] { return verifier.member("sweeps") && verifier.list<SweepRecord>(); });
}

}  // namespace tidemark
