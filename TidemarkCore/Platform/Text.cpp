#include "Text.h"

#include <QByteArrayView>
#include <QString>

#include <algorithm>
#include <array>
#include <span>

namespace tidemark {

namespace {

// The tab and the space separators of Unicode's category Zs.
constexpr std::array<std::string_view, 18> spaces{"\t", " ", "\u00A0", "\u1680", "\u2000", "\u2001",
    "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A",
    "\u202F", "\u205F", "\u3000"};

constexpr std::array<std::string_view, 7> newlines{
    "\n", "\v", "\f", "\r", "\xC2\x85", "\u2028", "\u2029"};

using Characters = std::span<const std::string_view>;

/// Looks at all of the text in any case: without a way out, the compiler takes many bytes at a time.
bool isASCII(std::string_view text)
{
    unsigned char bits = 0;
    for (const char c : text)
        bits |= static_cast<unsigned char>(c);
    return bits < 0x80;
}

/// How many bytes the first character of `text` has if it is one of these, else 0.
std::size_t leadingSize(std::string_view text, Characters characters)
{
    const auto found = std::ranges::find_if(
        characters, [text](std::string_view each) { return text.starts_with(each); });
    return found == characters.end() ? 0 : found->size();
}

std::size_t trailingSize(std::string_view text, Characters characters)
{
    const auto found = std::ranges::find_if(
        characters, [text](std::string_view each) { return text.ends_with(each); });
    return found == characters.end() ? 0 : found->size();
}

bool removeFrom(std::string_view& text, Characters characters)
{
    const std::size_t leading = leadingSize(text, characters);
    text.remove_prefix(leading);
    const std::size_t trailing = trailingSize(text, characters);
    text.remove_suffix(trailing);
    return leading + trailing > 0;
}

/// Where the dot before the extension is; npos when the name has none.
std::size_t extensionDot(std::string_view fileName)
{
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == fileName.size())
        return std::string_view::npos;
    return dot;
}

}  // namespace

std::string lowercased(std::string_view text)
{
    if (!isASCII(text))
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
            .toLower()
            .toStdString();
    std::string lower{text};
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

bool isValidUTF8(std::string_view bytes)
{
    return isASCII(bytes)
        || QByteArrayView{bytes.data(), static_cast<qsizetype>(bytes.size())}.isValidUtf8();
}

std::string withValidUTF8(std::string_view bytes)
{
    if (isValidUTF8(bytes))
        return std::string{bytes};
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())).toStdString();
}

std::string_view trimmedOfWhitespace(std::string_view text)
{
    while (removeFrom(text, spaces)) { }
    return text;
}

std::string_view trimmedOfWhitespaceAndNewlines(std::string_view text)
{
    while (removeFrom(text, spaces) || removeFrom(text, newlines)) { }
    return text;
}

std::string_view pathExtension(std::string_view fileName)
{
    const auto dot = extensionDot(fileName);
    return dot == std::string_view::npos ? std::string_view{} : fileName.substr(dot + 1);
}

std::string_view withoutPathExtension(std::string_view fileName)
{
    return fileName.substr(0, extensionDot(fileName));
}

bool isFileName(std::string_view name)
{
    constexpr std::string_view forbidden{"/\0", 2};
    return !name.empty() && name != "." && name != ".."
        && name.find_first_of(forbidden) == std::string_view::npos;
}

}  // namespace tidemark
