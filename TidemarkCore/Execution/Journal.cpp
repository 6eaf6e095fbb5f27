#include "Journal.h"

namespace tidemark {

void Journal::encode(JSONEncoder& encoder) const
{
    encoder.object([&] { encoder.member("sweeps", sweeps); });
}

Journal Journal::decode(const JSONDecoder& decoder)
{
    return {.sweeps = decoder["sweeps"].list<SweepRecord>()};
}

}  // namespace tidemark
