#pragma once

#include "OutputStream.h"
#include "PeopleText.h"

#include <string_view>

namespace tidemark {

/// How a piece of text stands out on a terminal that shows colours.
enum class Emphasis { none, strong, faint, good, bad };

/// Prints text for people on standard output. What it is given has been made safe to display.
class TextPrinter {
public:
    TextPrinter();

    const PeopleText& people() const { return m_people; }

    void print(std::string_view text, Emphasis emphasis = Emphasis::none);
    void printLine(std::string_view text = {}, Emphasis emphasis = Emphasis::none);

    /// `text`, then blanks up to `width` columns.
    void printPadded(std::string_view text, std::size_t width, Emphasis emphasis = Emphasis::none);

    /// Throws like OutputStream::flush.
    void flush() { m_output.flush(); }

    /// Like OutputStream::take.
    std::string take() { return m_output.take(); }

private:
    OutputStream m_output;
    PeopleText m_people;
    bool m_hasColour;
};

}  // namespace tidemark
