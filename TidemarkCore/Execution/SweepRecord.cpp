#include "SweepRecord.h"

namespace tidemark {

void SweepRecord::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("entries", entries);
        encoder.member("id", id);
        encoder.member("startedAt", startedAt);
    });
}

SweepRecord SweepRecord::decode(const JSONDecoder& decoder)
{
    return {
        .id = decoder["id"].uuid(),
        .startedAt = decoder["startedAt"].date(),
        .entries = decoder["entries"].list<JournalEntry>(),
    };
}

bool SweepRecord::verify(JSONVerifier& verifier)
{
    return verifier.object([&] {
        return verifier.member("entries") && verifier.list<JournalEntry>()  //
            && verifier.member("id") && verifier.uuid()  //
            && verifier.member("startedAt") && verifier.date();
    });
}

}  // namespace tidemark
