#pragma once

#include "Date.h"
#include "FileURL.h"
#include "JSONDecoder.h"
#include "JSONEncoder.h"
#include "JSONVerifier.h"

#include <string>
#include <string_view>

namespace tidemark {

/// One operation on one file. A plain value.
struct JournalEntry {
    enum class Op { move, archive, trash, rename };

    Op op = Op::move;
    std::string from;  ///< The absolute path before.
    std::string
        to;  ///< The absolute path after; `from` for a trashed file whose place is not known.
    Date at;  ///< When the sweep took place; whole seconds are stored.

    static JournalEntry between(Op op, const FileURL& from, const FileURL& to, Date at);

    void encode(JSONEncoder& encoder) const;
    static JournalEntry decode(const JSONDecoder& decoder);
    static bool verify(JSONVerifier& verifier);

    bool operator==(const JournalEntry&) const = default;
};

/// As stored: the enumerator's name.
std::string_view rawValue(JournalEntry::Op op);

}  // namespace tidemark
