#pragma once

#include <memory>
#include <string>

namespace tidemark {

class JSONDecoder;
struct JSONValue;

/// A JSON text (RFC 8259, UTF-8, with or without byte-order mark) that has been read and checked whole:
/// every value, whether or not anybody asks for it.
class JSONDocument {
public:
    /// `file` is what errors call the text. Throws DecodingError with line and column when it is no JSON,
    /// or nested more than 256 levels deep.
    JSONDocument(std::string text, std::string file);
    JSONDocument(JSONDocument&&) noexcept;
    JSONDocument& operator=(JSONDocument&&) noexcept;
    ~JSONDocument();

    /// Valid as long as the document.
    JSONDecoder root() const;

    const std::string& file() const;
    const JSONValue& rootValue() const;

private:
    struct Content;
    std::unique_ptr<Content> m_content;
};

}  // namespace tidemark
