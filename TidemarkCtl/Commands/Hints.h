#pragma once

#include <string_view>

/// What to do next, where more than one command says it.
namespace tidemark::hints {

inline constexpr std::string_view addFolder =
    "No folders watched yet. Add one with: tidemarkctl folders add ~/Downloads";
inline constexpr std::string_view preview = "See what a sweep would do with: tidemarkctl preview";
inline constexpr std::string_view resume = "Resume with: tidemarkctl resume";
inline constexpr std::string_view nothingToSweep = "Nothing to do: no file waits to be tidied.";

}  // namespace tidemark::hints
