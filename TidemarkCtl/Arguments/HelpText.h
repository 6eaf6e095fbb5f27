#pragma once

#include "Invocation.h"

#include <string>

namespace tidemark {

/// The manual in short: of one command, or of all.
std::string helpText(std::optional<Command> command);

/// Such as "tidemarkctl 1.2.3".
std::string versionText();

}  // namespace tidemark
