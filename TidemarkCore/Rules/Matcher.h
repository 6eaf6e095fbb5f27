#pragma once

#include "FileInfo.h"
#include "RuleMatch.h"

#include <string_view>

namespace tidemark {

/// Tests rules against files.
namespace Matcher {

/// Whether every condition of `match` holds for `file` at the moment `now`. Touches no disk.
bool matches(const RuleMatch& match, const FileInfo& file, Date now);

/// The same for every condition but the minimum age.
bool fitsApartFromAge(const RuleMatch& match, const FileInfo& file);

/// Whether it may depend on the screen-capture flag of a file with this name if `match` fits it.
bool asksForFlag(const RuleMatch& match, std::string_view name);

/// The same for the minimum age alone. Once old enough, a file stays so.
bool isOldEnough(const RuleMatch& match, const FileInfo& file, Date now);

/// The date from which `match` measures the age of `file`.
Date ageDate(const RuleMatch& match, const FileInfo& file);

}  // namespace Matcher

}  // namespace tidemark
