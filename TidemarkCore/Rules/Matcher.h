#pragma once

#include "FileInfo.h"
#include "RuleMatch.h"

namespace tidemark {

/// Tests rules against files.
namespace Matcher {

/// Whether every condition of `match` holds for `file` at the moment `now`. Touches no disk.
bool matches(const RuleMatch& match, const FileInfo& file, Date now);

}  // namespace Matcher

}  // namespace tidemark
