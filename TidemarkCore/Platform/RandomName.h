#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidemark {

/// Names for temporary files that no other writer comes upon.
namespace RandomName {

/// 16 hexadecimal digits from the system's random numbers.
std::string digits();

/// Whether `text` can come from `digits`.
bool isDigits(std::string_view text);

}  // namespace RandomName

}  // namespace tidemark
