#pragma once

#include "JSONDecoder.h"
#include "JSONDocument.h"
#include "JSONEncoder.h"
#include "JSONVerifier.h"

#include <string>
#include <string_view>

namespace tidemark {

/// The one way in which values become the text of a file and back: dates as ISO 8601 strings, the layout of
/// JSONEncoder. A value type brings `void encode(JSONEncoder&) const` and `static T decode(JSONDecoder)`.
namespace JSONCoders {

template <typename Value>
std::string encode(const Value& value)
{
    JSONEncoder encoder;
    encoder.encode(value);
    return encoder.takeText();
}

/// `file` is what errors call the text. Throws DecodingError.
template <typename Value>
Value decode(std::string text, std::string file)
{
    const JSONDocument document(std::move(text), std::move(file));
    return Value::decode(document.root());
}

/// Whether `text` is just what `encode` would write for the value that `decode` would make of it; see
/// JSONVerifier. The value type brings `static bool verify(JSONVerifier&)` in addition.
template <typename Value>
bool isEncoded(std::string_view text)
{
    JSONVerifier verifier(text);
    return Value::verify(verifier) && verifier.isAtEnd();
}

}  // namespace JSONCoders

}  // namespace tidemark
