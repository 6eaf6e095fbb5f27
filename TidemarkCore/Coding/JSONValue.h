#pragma once

#include <memory_resource>
#include <string_view>
#include <variant>
#include <vector>

namespace tidemark {

struct JSONMember;
struct JSONValue;

/// A number as it is written; whether it fits a type shows when it is asked for.
struct JSONNumber {
    std::string_view text;
};

using JSONArray = std::pmr::vector<JSONValue>;
using JSONObject = std::pmr::vector<JSONMember>;

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
