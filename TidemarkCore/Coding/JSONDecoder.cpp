#include "JSONDecoder.h"

#include "DecodingError.h"
#include "JSONValue.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace tidemark {

namespace {

const char* nameOfType(const JSONValue& value)
{
    static constexpr std::array names{
        "null", "a boolean", "a number", "a string", "an array", "an object"};
    return names.at(value.value.index());
}

/// Looks for `target` below `value` and writes the way to it. Errors are rare and final: finding the place
/// afterwards spares every value the memory of where it came from.
// NOLINTNEXTLINE(misc-no-recursion): a document's depth is bounded.
bool findPath(const JSONValue& value, const JSONValue* target, std::string& path)
{
    if (&value == target)
        return true;
    const std::size_t length = path.size();
    if (const auto* array = std::get_if<JSONArray>(&value.value)) {
        for (std::size_t index = 0; index < array->size(); ++index) {
            path += '[' + std::to_string(index) + ']';
            if (findPath(array->first[index], target, path))
                return true;
            path.resize(length);
        }
    }
    if (const auto* object = std::get_if<JSONObject>(&value.value)) {
        for (const JSONMember& member : *object) {
            path += path.empty() ? "" : ".";
            path += member.key;
            if (findPath(member.value, target, path))
                return true;
            path.resize(length);
        }
    }
    return false;
}

const JSONValue* findMember(const JSONObject& object, std::string_view key)
{
    for (const JSONMember* member = object.end(); member != object.begin();) {
        --member;
        if (member->key == key)
            return &member->value;
    }
    return nullptr;
}

std::string quoted(std::string_view text)
{
    constexpr std::size_t longest = 60;
    return '"' + std::string(text.substr(0, longest)) + (text.size() > longest ? "…" : "") + '"';
}

}  // namespace

void JSONDecoder::fail(std::string reason) const
{
    std::string path;
    findPath(m_document->rootValue(), m_value, path);
    throw DecodingError(m_document->file(), std::move(path), std::move(reason));
}

template <typename Alternative>
const Alternative& JSONDecoder::expect(const char* name) const
{
    if (const auto* alternative = std::get_if<Alternative>(&m_value->value))
        return *alternative;
    fail(std::string("expected ") + name + ", found " + nameOfType(*m_value));
}

std::string_view JSONDecoder::stringView() const
{
    return expect<std::string_view>("a string");
}

std::string JSONDecoder::string() const
{
    return std::string(stringView());
}

bool JSONDecoder::boolean() const
{
    return expect<bool>("a boolean");
}

double JSONDecoder::number() const
{
    const std::string_view text = expect<JSONNumber>("a number").text;
    double result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error != std::errc() || end != text.data() + text.size())
        fail("the number " + std::string(text.substr(0, 60)) + " does not fit");
    return result;
}

Date JSONDecoder::date() const
{
    const std::string_view text = stringView();
    if (const auto date = parseISO8601(text))
        return *date;
    fail("expected an ISO 8601 date such as \"2025-03-14T09:26:53Z\", found " + quoted(text));
}

QUuid JSONDecoder::uuid() const
{
    constexpr std::string_view shape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    const std::string_view text = stringView();
    const auto fits = [](char character, char wanted) {
        return wanted == '-' ? character == '-'
                             : std::isxdigit(static_cast<unsigned char>(character)) != 0;
    };
    if (!std::equal(text.begin(), text.end(), shape.begin(), shape.end(), fits))
        fail("expected a UUID, found " + quoted(text));
    return QUuid::fromString(QLatin1StringView(text.data(), static_cast<qsizetype>(text.size())));
}

FileURL JSONDecoder::fileURL() const
{
    const std::string_view text = stringView();
    if (auto url = FileURL::fromString(text))
        return *std::move(url);
    fail("expected a file URL such as \"file:///home/a/Desktop/\", found " + quoted(text));
}

std::vector<JSONDecoder> JSONDecoder::elements() const
{
    const auto& array = expect<JSONArray>("an array");
    std::vector<JSONDecoder> result;
    result.reserve(array.size());
    for (const JSONValue& value : array)
        result.emplace_back(*m_document, value);
    return result;
}

std::vector<std::string> JSONDecoder::strings() const
{
    std::vector<std::string> result;
    for (const JSONDecoder& decoder : elements())
        result.push_back(decoder.string());
    return result;
}

JSONDecoder JSONDecoder::operator[](std::string_view key) const
{
    if (const JSONValue* member = findMember(expect<JSONObject>("an object"), key))
        return {*m_document, *member};
    fail("the key \"" + std::string(key) + "\" is missing");
}

std::optional<JSONDecoder> JSONDecoder::find(std::string_view key) const
{
    const JSONValue* member = findMember(expect<JSONObject>("an object"), key);
    if (member == nullptr || std::holds_alternative<std::monostate>(member->value))
        return std::nullopt;
    return JSONDecoder(*m_document, *member);
}

std::pair<std::string_view, JSONDecoder> JSONDecoder::enumerationCase(
    std::initializer_list<std::string_view> names) const
{
    const auto& object = expect<JSONObject>("an object");
    std::string_view found;
    int count = 0;
    for (const std::string_view name : names) {
        if (findMember(object, name) != nullptr) {
            found = name;
            ++count;
        }
    }
    if (count != 1)
        fail("Invalid number of keys found, expected one.");
    const JSONDecoder values(*m_document, *findMember(object, found));
    values.expect<JSONObject>("an object");
    return {found, values};
}

}  // namespace tidemark
