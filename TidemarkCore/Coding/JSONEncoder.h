#pragma once

#include "Date.h"
#include "FileURL.h"

#include <QUuid>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidemark {

/// Writes JSON text laid out for people: two blanks of indent, a blank on both sides of the colon, sorted
/// keys, slashes and non-ASCII characters as they are, an empty line between the brackets of an empty array
/// or object, no newline at the end.
///
/// The caller gives an object's members in sorted order (asserted). A string that is not valid UTF-8 throws
/// std::invalid_argument: written once, it would make the whole file unreadable.
class JSONEncoder {
public:
    /// Starts as if `depth` objects or arrays were already open around the text.
    explicit JSONEncoder(std::size_t depth = 0);

    /// Makes room for a text of about that many bytes, so that a large one is not copied while it grows.
    void reserve(std::size_t bytes) { m_text.reserve(bytes); }

    void encode(std::string_view text);
    void encode(const char* text) { encode(std::string_view(text)); }
    void encode(const std::string& text) { encode(std::string_view(text)); }
    void encode(bool value);
    void encode(double
            value);  ///< Shortest form that reads back equal; throws std::domain_error unless finite.
    void encode(Date date);
    void encode(const QUuid& uuid);
    void encode(const FileURL& url);
    void encodeNull();

    template <typename Value>
    requires requires(const Value& value, JSONEncoder& encoder) { value.encode(encoder); }
    void encode(const Value& value) { value.encode(*this); }

    template <typename Element>
    void encode(const std::vector<Element>& elements)
    {
        array([&] {
            for (const Element& each : elements)
                element(each);
        });
    }

    /// Writes an object whose members `members` writes with `member`.
    template <typename Members>
    void object(Members members)
    {
        open('{');
        members();
        close('}');
    }

    /// Writes an array whose elements `elements` writes with `element`.
    template <typename Elements>
    void array(Elements elements)
    {
        open('[');
        elements();
        close(']');
    }

    template <typename Value>
    void member(std::string_view key, const Value& value)
    {
        beginMember(key);
        encode(value);
    }

    /// Nothing is written for an absent value.
    template <typename Value>
    void member(std::string_view key, const std::optional<Value>& value)
    {
        if (value)
            member(key, *value);
    }

    /// A member that is an object of its own.
    template <typename Members>
    void memberObject(std::string_view key, Members members)
    {
        beginMember(key);
        object(members);
    }

    /// A member that is an array of its own.
    template <typename Elements>
    void memberArray(std::string_view key, Elements elements)
    {
        beginMember(key);
        array(elements);
    }

    template <typename Value>
    void element(const Value& value)
    {
        beginElement();
        encode(value);
    }

    /// An element that is an object of its own.
    template <typename Members>
    void elementObject(Members members)
    {
        beginElement();
        object(members);
    }

    const std::string& text() const { return m_text; }

    /// Hands over the text so far; what is encoded afterwards continues it.
    std::string takeText() { return std::exchange(m_text, {}); }

private:
    void open(char bracket);
    void close(char bracket);
    void beginMember(std::string_view key);
    void beginElement();
    void startLine();

    std::string m_text;
    std::size_t m_depth;
    bool m_isEmpty = true;  // nothing stands yet between the innermost brackets
    std::vector<std::string> m_lastKeys;  // per open object or array, to see that keys are sorted
};

}  // namespace tidemark
