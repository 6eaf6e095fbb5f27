#include "ActivityItem.h"

#include <array>
#include <charconv>

namespace tidemark {

static std::string_view verbFor(JournalEntry::Op op)
{
    switch (op) {
    case JournalEntry::Op::move:
    case JournalEntry::Op::archive:
        return "Filed ";
    case JournalEntry::Op::trash:
        return "Trashed ";
    case JournalEntry::Op::rename:
        return "Renamed ";
    }
    return {};
}

static std::string decimal(double value)
{
    std::array<char, 400> buffer{};
    const auto result = std::to_chars(
        buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed);
    std::string text(buffer.data(), result.ptr);
    return text.find('.') == std::string::npos ? text + ".0" : text;
}

ActivityItem ActivityItem::of(const JournalEntry& entry)
{
    return {.op = entry.op, .fromPath = entry.from, .toPath = entry.to, .date = entry.at};
}

std::string ActivityItem::id() const
{
    return fromPath + '|' + decimal(date.time_since_epoch().count());
}

std::string_view ActivityItem::fileName() const
{
    return std::string_view(fromPath).substr(fromPath.rfind('/') + 1);  // npos + 1 is 0
}

std::string ActivityItem::summary() const
{
    return std::string(verbFor(op)).append(fileName());
}

}  // namespace tidemark
