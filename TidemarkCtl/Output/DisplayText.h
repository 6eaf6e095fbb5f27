#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// How names from the disk come onto a terminal without harm. The same in every locale.

namespace tidemark {

/// `text` with everything escaped that would not be seen as it is: control characters ("\n", "\x1b"),
/// characters that change the direction or cannot be seen ("\u{202e}"), bytes that are no UTF-8 ("\xff").
std::string displayText(std::string_view text);

/// How many columns a displayed text takes: two for a wide character, none for a combining one.
std::size_t displayWidth(std::string_view text);

/// The start of a displayed text that fits into `columns`, with "..." at its end where something is missing.
std::string clippedToWidth(std::string_view text, std::size_t columns);

}  // namespace tidemark
