#pragma once

#include <cstddef>
#include <string_view>
#include <variant>

namespace tidemark {

struct JSONMember;
struct JSONValue;

/// A number as it is written; whether it fits a type shows when it is asked for.
struct JSONNumber {
    std::string_view text;
};

/// The elements or members of a value, in their order. Small, since large documents hold very many.
template <typename Item>
struct JSONItems {
    const Item* first = nullptr;
    std::size_t count = 0;

    const Item* begin() const { return first; }
    const Item* end() const { return first + count; }
    std::size_t size() const { return count; }
};

using JSONArray = JSONItems<JSONValue>;
using JSONObject = JSONItems<JSONMember>;

/// One value of a JSON text (RFC 8259). It points into the JSONDocument it belongs to.
struct JSONValue {
    /// In this order: null, boolean, number, string, array, object.
    std::variant<std::monostate, bool, JSONNumber, std::string_view, JSONArray, JSONObject> value;
};

struct JSONMember {
    std::string_view key;
    JSONValue value;
};

}  // namespace tidemark
