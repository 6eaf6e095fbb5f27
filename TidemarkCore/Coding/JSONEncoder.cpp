#include "JSONEncoder.h"

#include "Text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace tidemark {

namespace {

constexpr std::string_view escapeFor(char character)
{
    switch (character) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\b':
        return "\\b";
    case '\f':
        return "\\f";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return {};
    }
}

constexpr bool needsEscape(char character)
{
    return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

void appendEscaped(std::string& text, char character)
{
    static constexpr std::string_view hexDigits = "0123456789abcdef";
    if (const std::string_view escape = escapeFor(character); !escape.empty()) {
        text += escape;
        return;
    }
    const auto code = static_cast<unsigned char>(character);
    text += "\\u00";
    text += hexDigits[code >> 4U];
    text += hexDigits[code & 0xFU];
}

}  // namespace

JSONEncoder::JSONEncoder(std::size_t depth)
    : m_depth(depth)
    , m_lastKeys(depth + 1)
{
}

void JSONEncoder::encode(std::string_view text)
{
    if (!isValidUTF8(text))
        throw std::invalid_argument("JSON cannot hold text that is not valid UTF-8");
    m_text += '"';
    while (!text.empty()) {
        const auto plain = static_cast<std::size_t>(
            std::find_if(text.begin(), text.end(), needsEscape) - text.begin());
        m_text += text.substr(0, plain);
        text.remove_prefix(plain);
        if (!text.empty()) {
            appendEscaped(m_text, text.front());
            text.remove_prefix(1);
        }
    }
    m_text += '"';
}

void JSONEncoder::encode(bool value)
{
    m_text += value ? "true" : "false";
}

void JSONEncoder::encode(double value)
{
    if (!std::isfinite(value))
        throw std::domain_error("JSON cannot hold a number that is not finite");
    // Left to itself, to_chars writes 600000 as 6e+05.
    const double magnitude = std::abs(value);
    const bool isPlain = magnitude == 0 || (magnitude >= 1e-6 && magnitude < 1e16);
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
        isPlain ? std::chars_format::fixed : std::chars_format::general);
    m_text.append(buffer.data(), result.ptr);
}

void JSONEncoder::encode(Date date)
{
    encode(formatISO8601(date));
}

void JSONEncoder::encode(const QUuid& uuid)
{
    encode(uuid.toString(QUuid::WithoutBraces).toUpper().toStdString());
}

void JSONEncoder::encode(const FileURL& url)
{
    encode(url.toString());
}

void JSONEncoder::encodeNull()
{
    m_text += "null";
}

void JSONEncoder::open(char bracket)
{
    m_text += bracket;
    ++m_depth;
    m_isEmpty = true;
    m_lastKeys.emplace_back();
}

void JSONEncoder::close(char bracket)
{
    if (m_isEmpty)
        m_text += '\n';
    --m_depth;
    m_lastKeys.pop_back();
    startLine();
    m_text += bracket;
    m_isEmpty = false;
}

void JSONEncoder::beginMember(std::string_view key)
{
    assert(m_isEmpty || m_lastKeys.back() < key);
    beginElement();
    encode(key);
    m_text += " : ";
    m_lastKeys.back() = key;
}

void JSONEncoder::beginElement()
{
    if (!m_isEmpty)
        m_text += ',';
    startLine();
    m_isEmpty = false;
}

void JSONEncoder::startLine()
{
    m_text += '\n';
    m_text.append(2 * m_depth, ' ');
}

}  // namespace tidemark
