#include "TextPrinter.h"

#include "DisplayText.h"
#include "Terminal.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace tidemark {

static std::string_view startOf(Emphasis emphasis)
{
    switch (emphasis) {
    case Emphasis::none:
        return {};
    case Emphasis::strong:
        return "\x1b[1m";
    case Emphasis::faint:
        return "\x1b[2m";
    case Emphasis::good:
        return "\x1b[32m";
    case Emphasis::bad:
        return "\x1b[31m";
    }
    return {};
}

TextPrinter::TextPrinter()
    : m_output(STDOUT_FILENO)
    , m_hasColour(Terminal::showsColour(STDOUT_FILENO))
{
}

void TextPrinter::print(std::string_view text, Emphasis emphasis)
{
    if (!m_hasColour || emphasis == Emphasis::none || text.empty())
        return m_output.write(text);
    m_output.write(startOf(emphasis));
    m_output.write(text);
    m_output.write("\x1b[0m");
}

void TextPrinter::printLine(std::string_view text, Emphasis emphasis)
{
    print(text, emphasis);
    m_output.write("\n");
}

void TextPrinter::printPadded(std::string_view text, std::size_t width, Emphasis emphasis)
{
    print(text, emphasis);
    const std::size_t taken = displayWidth(text);
    m_output.write(std::string(width - std::min(width, taken), ' '));
}

}  // namespace tidemark
