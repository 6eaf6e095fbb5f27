#pragma once

#include "JSONDecoder.h"
#include "JSONEncoder.h"

#include <string_view>

namespace tidemark {

/// Which of a file's dates its age is measured from.
enum class AgeBasis { modified, added, lastOpened };

/// As stored: the enumerator's name.
std::string_view rawValue(AgeBasis basis);

/// Throws DecodingError for any other string.
AgeBasis decodeAgeBasis(const JSONDecoder& decoder);

}  // namespace tidemark
