#pragma once

#include <cstdlib>
#include <string>

namespace tidemark {

/// The tidemarkctl that a test runs: the one that was built, unless $TIDEMARKCTL names a copy, as for a
/// user who may not look into the build folder.
inline std::string programUnderTest(const char* built)
{
    const char* copy = std::getenv("TIDEMARKCTL");
    return copy != nullptr ? copy : built;
}

}  // namespace tidemark
