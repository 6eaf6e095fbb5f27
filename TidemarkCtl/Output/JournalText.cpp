#include "JournalText.h"

#include "DisplayText.h"

namespace tidemark::JournalText {

std::string_view verb(JournalEntry::Op op)
{
    switch (op) {
    case JournalEntry::Op::move:
    case JournalEntry::Op::archive:
        return "Filed";
    case JournalEntry::Op::trash:
        return "Trashed";
    case JournalEntry::Op::rename:
        return "Renamed";
    }
    return {};
}

std::string name(std::string_view path)
{
    return displayText(path.substr(path.rfind('/') + 1));  // npos + 1 is 0
}

std::string destination(JournalEntry::Op op, std::string_view path, const PeopleText& people)
{
    if (op == JournalEntry::Op::trash)
        return "-> Trash";
    return "-> " + people.path(path);
}

}  // namespace tidemark::JournalText
