#pragma once

#include "SweepRecord.h"

#include <vector>

namespace tidemark {

/// Every sweep there was and that was not undone, oldest first. A plain value; it is never trimmed.
struct Journal {
    std::vector<SweepRecord> sweeps;

    void encode(JSONEncoder& encoder) const;
    static Journal decode(const JSONDecoder& decoder);
    static bool verify(JSONVerifier& verifier);

    bool operator==(const Journal&) const = default;
};

}  // namespace tidemark
