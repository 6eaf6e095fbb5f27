#pragma once

#include "Date.h"
#include "FileURL.h"
#include "JSONDocument.h"

#include <QUuid>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidemark {

/// Reads typed values out of one place of a JSONDocument.
///
/// A small value that is valid as long as the document. Every failure throws DecodingError with the coding
/// path, such as "folders[2].rules[0].match.minAge". Of two members with one key the last counts.
class JSONDecoder {
public:
    JSONDecoder(const JSONDocument& document, const JSONValue& value)
        : m_document(&document)
        , m_value(&value)
    {
    }

    std::string string() const;
    std::string_view stringView() const;  ///< Valid as long as the document.
    double number() const;
    bool boolean() const;
    Date date() const;  ///< An ISO 8601 string.
    QUuid uuid() const;  ///< A string of the canonical 36 characters.
    FileURL fileURL() const;  ///< A file URL string.
    std::vector<JSONDecoder> elements() const;

    std::vector<std::string> strings() const;  ///< An array of strings.

    /// A member of this object that has to be there.
    JSONDecoder operator[](std::string_view key) const;

    /// A member of this object that may be missing, or null, which counts as missing.
    std::optional<JSONDecoder> find(std::string_view key) const;

    /// The form of an enumeration with values: an object with exactly one key among `names`, whose value is
    /// an object. Returns that key and value; other keys are ignored.
    std::pair<std::string_view, JSONDecoder> enumerationCase(
        std::initializer_list<std::string_view> names) const;

    /// Decodes every element by `Element::decode`.
    template <typename Element>
    std::vector<Element> list() const
    {
        const std::vector<JSONDecoder> decoders = elements();
        std::vector<Element> result;
        result.reserve(decoders.size());
        for (const JSONDecoder& decoder : decoders)
            result.push_back(Element::decode(decoder));
        return result;
    }

    /// Throws the DecodingError of this place.
    [[noreturn]] void fail(std::string reason) const;

private:
    template <typename Alternative>
    const Alternative& expect(const char* name) const;

    const JSONDocument* m_document;
    const JSONValue* m_value;
};

}  // namespace tidemark
