#include "DisplayText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cwchar>

namespace tidemark {

namespace {

struct Character {
    std::string_view bytes;
    std::uint32_t codePoint = 0;
    bool isValid = false;  // else `bytes` is a single byte
};

std::size_t sequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead < 0xE0)
        return 2;
    if (lead >= 0xE0 && lead < 0xF0)
        return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

bool isEncodedShortest(std::uint32_t codePoint, std::size_t length)
{
    constexpr std::array<std::uint32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    return codePoint >= smallest.at(length) && codePoint <= 0x10FFFF && !isSurrogate;
}

Character firstCharacter(std::string_view text)
{
    const Character broken{.bytes = text.substr(0, 1)};
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = sequenceLength(lead);
    if (length == 0 || length > text.size())
        return broken;
    std::uint32_t codePoint = length == 1 ? lead : lead & (0x7FU >> length);
    for (const char each : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(each);
        if ((byte & 0xC0U) != 0x80U)
            return broken;
        codePoint = codePoint << 6U | (byte & 0x3FU);
    }
    if (!isEncodedShortest(codePoint, length))
        return broken;
    return {.bytes = text.substr(0, length), .codePoint = codePoint, .isValid = true};
}

bool isPlainASCII(std::string_view text)
{
    return std::ranges::all_of(text, [](char each) { return each >= 0x20 && each < 0x7F; });
}

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

/// Controls of both sets, and what reorders text or leaves no mark: a name could pass for another one.
constexpr std::array unseen{
    Range{0x00, 0x1F},
    Range{0x7F, 0x9F},
    Range{0xAD, 0xAD},
    Range{0x61C, 0x61C},
    Range{0x180E, 0x180E},
    Range{0x200B, 0x200B},
    Range{0x200E, 0x200F},
    Range{0x2028, 0x202E},
    Range{0x2060, 0x206F},
    Range{0xFEFF, 0xFEFF},
    Range{0xFFF9, 0xFFFB},
    Range{0xE0000, 0xE0FFF},
};

bool isUnseen(std::uint32_t codePoint)
{
    return std::ranges::any_of(unseen,
        [=](const Range& range) { return codePoint >= range.first && codePoint <= range.last; });
}

std::string hexadecimal(std::uint32_t value)
{
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
    std::string text{digits.data(), end};
    return text.size() < 2 ? '0' + text : text;
}

std::string escaped(const Character& character)
{
    if (!character.isValid)
        return "\\x" + hexadecimal(static_cast<unsigned char>(character.bytes.front()));
    switch (character.codePoint) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    if (character.codePoint < 0x80)
        return "\\x" + hexadecimal(character.codePoint);
    return "\\u{" + hexadecimal(character.codePoint) + '}';
}

/// Switches this thread to a locale that knows Unicode's widths, for as long as it lives.
class UnicodeScope {
public:
    UnicodeScope()
        : m_previous(::uselocale(unicode()))
    {
    }
    ~UnicodeScope() { ::uselocale(m_previous); }
    UnicodeScope(const UnicodeScope&) = delete;
    UnicodeScope& operator=(const UnicodeScope&) = delete;

private:
    static locale_t unicode()
    {
        static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }

    locale_t m_previous;
};

std::size_t widthOf(std::uint32_t codePoint)
{
    // What the C library does not know yet takes one column on most terminals.
    const int width = ::wcwidth(static_cast<wchar_t>(codePoint));
    return width < 0 ? 1 : static_cast<std::size_t>(width);
}

}  // namespace

std::string displayText(std::string_view text)
{
    if (isPlainASCII(text))
        return std::string{text};
    std::string result;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (character.isValid && !isUnseen(character.codePoint))
            result += character.bytes;
        else
            result += escaped(character);
        text.remove_prefix(character.bytes.size());
    }
    return result;
}

std::size_t displayWidth(std::string_view text)
{
    if (isPlainASCII(text))
        return text.size();
    const UnicodeScope unicode;
    std::size_t width = 0;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        width += character.isValid ? widthOf(character.codePoint) : 1;
        text.remove_prefix(character.bytes.size());
    }
    return width;
}

std::string clippedToWidth(std::string_view text, std::size_t columns)
{
    constexpr std::string_view ellipsis = "...";
    if (displayWidth(text) <= columns)
        return std::string{text};
    const std::size_t room = columns - std::min(columns, ellipsis.size());
    std::string result;
    std::size_t width = 0;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        width += displayWidth(character.bytes);
        if (width > room)
            break;
        result += character.bytes;
        text.remove_prefix(character.bytes.size());
    }
    return result.append(ellipsis.substr(0, columns));
}

}  // namespace tidemark
