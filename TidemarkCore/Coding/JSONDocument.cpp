#include "JSONDocument.h"

#include "DecodingError.h"
#include "JSONDecoder.h"
#include "JSONValue.h"
#include "Text.h"

#include <simdjson.h>

#include <algorithm>
#include <memory>
#include <memory_resource>
#include <vector>

namespace tidemark {

namespace {

constexpr int deepestNesting = 256;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Reads a text into values by simdjson's On-Demand interface, which leaves numbers as they are written.
/// It skips over what nobody asks for unchecked; so everything is asked for here.
class Reader {
public:
    explicit Reader(std::pmr::memory_resource& memory)
        : m_memory(&memory)
    {
    }

    JSONValue read(simdjson::ondemand::document& document)
    {
        bool isScalar = false;
        if (const auto error = document.is_scalar().get(isScalar))
            throw simdjson::simdjson_error(error);
        // No file of ours is a scalar, so what follows one does not matter.
        if (isScalar)
            return readRootScalar(document);
        JSONValue root = readValue(document.get_value(), 1);
        const char* rest = nullptr;
        if (document.current_location().get(rest) == simdjson::SUCCESS)
            throw simdjson::simdjson_error(simdjson::TRAILING_CONTENT);
        return root;
    }

private:
    static JSONValue readRootScalar(simdjson::ondemand::document& document)
    {
        if (document.type() == simdjson::ondemand::json_type::string)
            return {std::string_view(document.get_string())};
        return readLiteralOrNumber(document.raw_json_token());
    }

    // NOLINTNEXTLINE(misc-no-recursion): the depth is bounded.
    JSONValue readValue(simdjson::ondemand::value value, int depth)
    {
        if (depth > deepestNesting)
            throw simdjson::simdjson_error(simdjson::DEPTH_ERROR);
        switch (value.type()) {
        case simdjson::ondemand::json_type::object:
            return {readObject(value.get_object(), depth)};
        case simdjson::ondemand::json_type::array:
            return {readArray(value.get_array(), depth)};
        case simdjson::ondemand::json_type::string:
            return {std::string_view(value.get_string())};
        default:
            return readLiteralOrNumber(value.raw_json_token());
        }
    }

    // NOLINTNEXTLINE(misc-no-recursion): the depth is bounded.
    JSONObject readObject(simdjson::ondemand::object object, int depth)
    {
        const std::size_t start = m_members.size();
        for (simdjson::ondemand::field field : object) {
            const std::string_view key = field.unescaped_key();
            JSONValue value = readValue(field.value(), depth + 1);
            m_members.push_back({key, value});
        }
        return keep(m_members, start);
    }

    // NOLINTNEXTLINE(misc-no-recursion): the depth is bounded.
    JSONArray readArray(simdjson::ondemand::array array, int depth)
    {
        const std::size_t start = m_elements.size();
        for (simdjson::ondemand::value element : array) {
            JSONValue value = readValue(element, depth + 1);
            m_elements.push_back(value);
        }
        return keep(m_elements, start);
    }

    /// Takes what was read last, from `start` on, to where it stays.
    template <typename Item>
    JSONItems<Item> keep(std::vector<Item>& items, std::size_t start)
    {
        const std::size_t count = items.size() - start;
        auto* kept = static_cast<Item*>(m_memory->allocate(count * sizeof(Item), alignof(Item)));
        std::uninitialized_copy(
            items.begin() + static_cast<std::ptrdiff_t>(start), items.end(), kept);
        items.resize(start);
        return {kept, count};
    }

    static JSONValue readLiteralOrNumber(std::string_view token)
    {
        // The token reaches to the next one, over the blanks between them.
        token = token.substr(0, token.find_last_not_of(" \t\r\n") + 1);
        if (token == "null")
            return {};
        if (token == "true")
            return {true};
        if (token == "false")
            return {false};
        if (!isNumber(token))
            throw simdjson::simdjson_error(simdjson::INCORRECT_TYPE);
        return {JSONNumber{token}};
    }

    static std::string_view skipDigits(std::string_view text)
    {
        return text.substr(std::min(text.find_first_not_of("0123456789"), text.size()));
    }

    /// The number grammar of RFC 8259, section 6.
    static bool isNumber(std::string_view text)
    {
        if (text.starts_with('-'))
            text.remove_prefix(1);
        const std::string_view whole = text;
        text = skipDigits(text);
        const std::size_t digits = whole.size() - text.size();
        if (digits == 0 || (digits > 1 && whole.starts_with('0')))
            return false;
        if (text.starts_with('.') && !removeDigitsAfter(text, 1))
            return false;
        if (text.starts_with('e') || text.starts_with('E')) {
            const bool hasSign = text.size() > 1 && (text[1] == '+' || text[1] == '-');
            if (!removeDigitsAfter(text, hasSign ? 2 : 1))
                return false;
        }
        return text.empty();
    }

    static bool removeDigitsAfter(std::string_view& text, std::size_t prefix)
    {
        text.remove_prefix(prefix);
        const std::size_t before = text.size();
        text = skipDigits(text);
        return text.size() < before;
    }

    std::pmr::memory_resource* m_memory;
    // Of the objects and arrays that are still open, one behind the other.
    std::vector<JSONMember> m_members;
    std::vector<JSONValue> m_elements;
};

/// Line and column of a place in the text, counted from 1; columns are bytes.
std::string positionOf(std::size_t offset, std::string_view text)
{
    const std::string_view before = text.substr(0, offset);
    const auto line = std::ranges::count(before, '\n') + 1;
    const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    return "line " + std::to_string(line) + ", column "
        + std::to_string(before.size() - lineStart + 1);
}

/// Where the first line starts that is not UTF-8.
std::size_t firstInvalidLine(std::string_view text)
{
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        if (!isValidUTF8(text.substr(start, end - start)))
            return start;
        start = end + 1;
    }
    return text.size();
}

/// Where the text stops being JSON. `place` is simdjson's word, if it has one; it has none when the text
/// ends too early.
std::string positionOf(
    const simdjson::simdjson_error& error, const char* place, std::string_view text)
{
    if (error.error() == simdjson::EMPTY)
        return {};
    if (error.error() == simdjson::UTF8_ERROR)
        return positionOf(firstInvalidLine(text), text);
    const std::size_t offset =
        place == nullptr ? text.size() : static_cast<std::size_t>(place - text.data());
    return positionOf(std::min(offset, text.size()), text);
}

std::string reasonFor(const simdjson::simdjson_error& error)
{
    switch (error.error()) {
    case simdjson::EMPTY:
        return "the file is empty";
    case simdjson::UTF8_ERROR:
        return "not valid UTF-8";
    case simdjson::UNCLOSED_STRING:
        return "not valid JSON: a string does not end";
    case simdjson::INCOMPLETE_ARRAY_OR_OBJECT:
        return "not valid JSON: an array or object does not end";
    case simdjson::UNESCAPED_CHARS:
        return "not valid JSON: a control character in a string";
    case simdjson::STRING_ERROR:
        return "not valid JSON: a wrong escape in a string";
    case simdjson::DEPTH_ERROR:
        return "nested more than " + std::to_string(deepestNesting) + " levels deep";
    case simdjson::TRAILING_CONTENT:
        return "not valid JSON: more text after the end";
    default:
        return "not valid JSON";
    }
}

}  // namespace

struct JSONDocument::Content {
    std::string text;
    std::string file;
    simdjson::ondemand::parser parser;  // holds the strings with their escapes resolved
    std::pmr::monotonic_buffer_resource memory;
    JSONValue root;
};

JSONDocument::JSONDocument(std::string text, std::string file)
    : m_content(std::make_unique<Content>())
{
    m_content->text = std::move(text);
    m_content->file = std::move(file);
    if (m_content->text.starts_with(byteOrderMark))
        m_content->text.erase(0, byteOrderMark.size());
    m_content->text.reserve(m_content->text.size() + simdjson::SIMDJSON_PADDING);

    simdjson::ondemand::document document;
    bool hasDocument = false;  // without one, simdjson must not be asked for a place
    try {
        document = m_content->parser.iterate(
            m_content->text.data(), m_content->text.size(), m_content->text.capacity());
        hasDocument = true;
        m_content->root = Reader(m_content->memory).read(document);
    } catch (const simdjson::simdjson_error& error) {
        const char* place = nullptr;
        if (!hasDocument || document.current_location().get(place) != simdjson::SUCCESS)
            place = nullptr;
        throw DecodingError(
            m_content->file, positionOf(error, place, m_content->text), reasonFor(error));
    }
}

JSONDocument::JSONDocument(JSONDocument&&) noexcept = default;
JSONDocument& JSONDocument::operator=(JSONDocument&&) noexcept = default;
JSONDocument::~JSONDocument() = default;

JSONDecoder JSONDocument::root() const
{
    return {*this, m_content->root};
}
const std::string& JSONDocument::file() const
{
    return m_content->file;
}
const JSONValue& JSONDocument::rootValue() const
{
    return m_content->root;
}

}  // namespace tidemark
