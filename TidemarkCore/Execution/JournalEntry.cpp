#include "JournalEntry.h"

namespace tidemark {

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
    using Op = JournalEntry::Op;
    const std::string_view text = decoder.stringView();
    for (const Op op : {Op::move, Op::archive, Op::trash, Op::rename}) {
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

}  // namespace tidemark
