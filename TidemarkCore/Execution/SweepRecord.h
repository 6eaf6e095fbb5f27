#pragma once

#include "JournalEntry.h"

#include <QUuid>

#include <vector>

namespace tidemark {

/// What one sweep did. A plain value.
struct SweepRecord {
    QUuid id = QUuid::createUuid();
    Date startedAt;
    std::vector<JournalEntry> entries = {};  ///< In the order of the operations.

    void encode(JSONEncoder& encoder) const;
    static SweepRecord decode(const JSONDecoder& decoder);
    static bool verify(JSONVerifier& verifier);

    bool operator==(const SweepRecord&) const = default;
};

}  // namespace tidemark
