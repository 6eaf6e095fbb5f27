#pragma once

#include <string>
#include <string_view>

// All text in the core is UTF-8 in std::string; these are the operations that need to know more.

namespace tidemark {

/// Lower case by Unicode's rules, the same in every locale. `text` must be valid UTF-8.
std::string lowercased(std::string_view text);

bool isValidUTF8(std::string_view bytes);

/// The same text with U+FFFD in place of bytes that are not valid UTF-8.
std::string withValidUTF8(std::string_view bytes);

/// Removes the tab and Unicode's space separators (category Zs) from both ends; newlines stay.
std::string_view trimmedOfWhitespace(std::string_view text);

/// Removes the tab, Unicode's space separators and the newline characters (U+000A to U+000D, U+0085,
/// U+2028, U+2029) from both ends.
std::string_view trimmedOfWhitespaceAndNewlines(std::string_view text);

/// The text after the last dot of a file name; empty when there is none, when nothing follows it, or
/// when the dot is the name's first character (".profile").
std::string_view pathExtension(std::string_view fileName);

/// The file name without its extension and the dot before it.
std::string_view withoutPathExtension(std::string_view fileName);

/// Whether `name` can name an entry of a folder: not empty, not "." or "..", no "/" and no NUL.
bool isFileName(std::string_view name);

}  // namespace tidemark
