#pragma once

#include "Invocation.h"

#include <span>

namespace tidemark {

/// Reads the arguments of one call, without the program's own name. Options may stand before and behind the
/// command, as "--now DATE" or "--now=DATE"; "--" ends them. Throws UsageError.
Invocation parseArguments(std::span<const char* const> arguments);

}  // namespace tidemark
