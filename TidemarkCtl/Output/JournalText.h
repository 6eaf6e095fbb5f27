#pragma once

#include "JournalEntry.h"
#include "PeopleText.h"

#include <string>
#include <string_view>

namespace tidemark {

/// Tells the entries of the journal to people. What it returns is safe to display.
namespace JournalText {

/// What was done to the file, in one word.
std::string_view verb(JournalEntry::Op op);

/// The name of the file at `path`.
std::string name(std::string_view path);

/// Such as "-> ~/Documents/report.pdf", or "-> Trash".
std::string destination(JournalEntry::Op op, std::string_view path, const PeopleText& people);

}  // namespace JournalText

}  // namespace tidemark
