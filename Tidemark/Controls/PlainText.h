#pragma once

#include <QString>

#include <string_view>

// How text from the disk, such as a file's name, comes into the interface as what it is.

namespace tidemark {

/// UTF-8 as one line, with U+FFFD for what would not be seen as it is: control characters, line ends, and
/// characters that change the direction of what follows.
QString oneLine(std::string_view text);

/// What a tooltip has to be given to show `text`, also if that looks like markup.
QString plainToolTip(const QString& text);

/// Cuts out the middle of a text that is longer than `characters`.
QString shortened(const QString& text, qsizetype characters);

}  // namespace tidemark
