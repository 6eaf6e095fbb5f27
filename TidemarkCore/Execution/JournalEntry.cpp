#include "JournalEntry.h"

#include <algorithm>
#include <array>

namespace tidemark {

static constexpr std::array everyOp{JournalEntry::Op::move, JournalEntry::Op::archive,
    JournalEntry::Op::trash, JournalEntry::Op::rename};

std::string_view rawValue(JournalEntry::Op op)
{
    switch (op) {
    case JournalEntry::Op::move:
        return "move";
    case JournalEntry::Op::archive:
        return "archive";
    case JournalEntry::Op::trash:
        return "trash";
    case JournalEntry::Op::rename:
        return "rename";
    }
    return {};
}

static JournalEntry::Op decodeOp(const JSONDecoder& decoder)
{
    const std::string_view text = decoder.stringView();
    for (const JournalEntry::Op op : everyOp) {
        if (rawValue(op) == text)
            return op;
    }
    decoder.fail("Cannot initialize Op from invalid String value " + std::string(text));
}

JournalEntry JournalEntry::between(Op op, const FileURL& from, const FileURL& to, Date at)
{
    return {.op = op, .from = from.path(), .to = to.path(), .at = at};
}

void JournalEntry::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("at", at);
        encoder.member("from", from);
        encoder.member("op", rawValue(op));
        encoder.member("to", to);
    });
}

JournalEntry JournalEntry::decode(const JSONDecoder& decoder)
{
    return {
        .op = decodeOp(decoder["op"]),
        .from = decoder["from"].string(),
        .to = decoder["to"].string(),
        .at = decoder["at"].date(),
    };
}

static bool verifyOp(JSONVerifier& verifier)
{
    return std::ranges::any_of(
        everyOp, [&](JournalEntry::Op op) { return verifier.string(rawValue(op)); });
}

bool JournalEntry::verify(JSONVerifier& verifier)
{
    return verifier.object([&] {
        return verifier.member("at") && verifier.date()  //
            && verifier.member("from") && verifier.string()  //
            && verifier.member("op") && verifyOp(verifier)  //
            && verifier.member("to") && verifier.string();
    });
}

}  // namespace tidemark
