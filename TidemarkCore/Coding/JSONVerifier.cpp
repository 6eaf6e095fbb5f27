#include "JSONVerifier.h"

#include "Date.h"
#include "Text.h"

#include <algorithm>

namespace tidemark {

namespace {

/// Without a look at each byte's kind in turn, which takes much longer.
bool isPlain(std::string_view text)
{
    bool isSpecial = false;
    for (const char each : text)
        isSpecial |= static_cast<unsigned char>(each) < 0x20 || each == '\\';
    return !isSpecial;
}

/// The size of the escape at the head of `text`, if JSONEncoder writes it; else 0.
std::size_t escapeSize(std::string_view text)
{
    constexpr std::string_view letters = "\"\\bfnrt";
    const bool isKnown =
        text.size() >= 2 && text[0] == '\\' && letters.find(text[1]) != std::string_view::npos;
    return isKnown ? 2 : 0;
}

/// The size of the string at the head of `text` without its closing quote; npos if it is none of ours.
std::size_t escapedSize(std::string_view text)
{
    std::size_t size = 0;
    while (size < text.size() && text[size] != '"') {
        const bool isControl = static_cast<unsigned char>(text[size]) < 0x20;
        const std::size_t step = text[size] == '\\' ? escapeSize(text.substr(size)) : 1;
        if (isControl || step == 0)
            return std::string_view::npos;
        size += step;
    }
    return size;
}

}  // namespace

bool JSONVerifier::string()
{
    if (!m_rest.starts_with('"'))
        return false;
    const std::string_view inside = m_rest.substr(1);
    std::size_t size = inside.find('"');
    if (size == std::string_view::npos)
        return false;
    if (!isPlain(inside.substr(0, size)))
        size = escapedSize(inside);
    if (size >= inside.size() || !isValidUTF8(inside.substr(0, size)))
        return false;
    m_rest = inside.substr(size + 1);
    return true;
}

bool JSONVerifier::string(std::string_view wanted)
{
    const std::size_t size = wanted.size() + 2;
    if (m_rest.size() < size || m_rest[0] != '"' || m_rest[size - 1] != '"'
        || m_rest.substr(1, wanted.size()) != wanted)
        return false;
    m_rest.remove_prefix(size);
    return true;
}

bool JSONVerifier::date()
{
    if (!m_lastDate.empty() && skip(m_lastDate))
        return true;
    const std::string_view quoted = m_rest.substr(0, sizeof("\"2025-03-14T09:26:53Z\"") - 1);
    if (!string() || m_rest.data() != quoted.data() + quoted.size())
        return false;
    const std::string_view text = quoted.substr(1, quoted.size() - 2);
    const auto date = parseISO8601(text);
    if (!date || formatISO8601(*date) != text)
        return false;
    m_lastDate = quoted;
    return true;
}

bool JSONVerifier::uuid()
{
    constexpr std::string_view shape = "\"XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX\"";
    static constexpr std::string_view digits = "0123456789ABCDEF";
    const std::string_view text = m_rest.substr(0, shape.size());
    const auto fits = [](char character, char wanted) {
        return wanted == 'X' ? digits.find(character) != std::string_view::npos
                             : character == wanted;
    };
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), fits) && skip(text);
}

bool JSONVerifier::member(std::string_view key)
{
    return beginElement() && string(key) && skip(" : ");
}

bool JSONVerifier::open(char bracket)
{
    ++m_depth;
    m_isEmpty = true;
    return skip(bracket);
}

bool JSONVerifier::close(char bracket)
{
    if (m_isEmpty && !skip('\n'))
        return false;
    --m_depth;
    m_isEmpty = false;
    return startLine() && skip(bracket);
}

bool JSONVerifier::hasElement() const
{
    return m_isEmpty ? !m_rest.starts_with("\n\n") : m_rest.starts_with(',');
}

bool JSONVerifier::beginElement()
{
    if (!m_isEmpty && !skip(','))
        return false;
    m_isEmpty = false;
    return startLine();
}

bool JSONVerifier::startLine()
{
    constexpr std::string_view blanks = "                ";
    return skip('\n') && 2 * m_depth <= blanks.size() && skip(blanks.substr(0, 2 * m_depth));
}

bool JSONVerifier::skip(char wanted)
{
    if (!m_rest.starts_with(wanted))
        return false;
    m_rest.remove_prefix(1);
    return true;
}

bool JSONVerifier::skip(std::string_view wanted)
{
    if (!m_rest.starts_with(wanted))
        return false;
    m_rest.remove_prefix(wanted.size());
    return true;
}

}  // namespace tidemark
