#include "MarkdownFrontMatter.h"

#include "TimeZone.h"

#include <QString>

#include <algorithm>
#include <charconv>

namespace tidemark {

namespace {

bool areNumeric(const QList<uint>& characters, qsizetype from, qsizetype count)
{
    const auto begin = characters.cbegin() + from;
    return std::all_of(
        begin, begin + count, [](uint character) { return QChar::isNumber(character); });
}

std::optional<int> wholeNumber(std::string_view digits)
{
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isWhole =
        error == std::errc() && end == digits.data() + digits.size() && digits[0] != '-';
    return isWhole ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<std::string> MarkdownFrontMatter::month() const
{
    constexpr qsizetype length = 7;
    constexpr qsizetype yearLength = 4;
    if (!date)
        return std::nullopt;
    const QList<uint> characters = QString::fromStdString(*date).toUcs4();
    if (characters.size() < length || characters[yearLength] != '-'
        || !areNumeric(characters, 0, yearLength)
        || !areNumeric(characters, yearLength + 1, length - yearLength - 1))
        return std::nullopt;
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(characters.constData()), length)
        .toStdString();
}

std::optional<Date> MarkdownFrontMatter::createdDate() const
{
    constexpr std::size_t length = 10;
    if (!date || date->size() < length)
        return std::nullopt;
    const std::string_view text = std::string_view(*date).substr(0, length);
    if (text[4] != '-' || text[7] != '-')
        return std::nullopt;
    const auto year = wholeNumber(text.substr(0, 4));
    const auto month = wholeNumber(text.substr(5, 2));
    const auto day = wholeNumber(text.substr(8, 2));
    if (!year || !month || !day)
        return std::nullopt;
    return TimeZone::current().startOfDay(*year, *month, *day);
}

}  // namespace tidemark
