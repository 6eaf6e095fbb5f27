#pragma once

#include <string>

namespace tidemark {

/// Shell patterns for file names.
namespace NamePattern {

/// Whether `pattern` matches the whole of `name`, without regard to case, in every locale alike: fnmatch(3)
/// with FNM_CASEFOLD alone, so that `*` also matches a leading dot. Both are valid UTF-8.
bool matches(const std::string& pattern, const std::string& name);

}  // namespace NamePattern

}  // namespace tidemark
