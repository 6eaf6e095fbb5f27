#pragma once

#include <string_view>

namespace tidemark {

/// Finds out whether there is a newer version of the application. Keeps no state.
namespace Updater {

/// Whether version `a` is strictly newer than version `b`.
///
/// Versions are compared number by number between their dots; empty pieces count as not there, missing numbers
/// as 0. A piece is a decimal number with or without a sign; one that is anything else, or too large for 64 bits,
/// counts as 0. So "1.2" and "1.2.0" are equal, "1.10" is newer than "1.9", and "2.0-beta" equals "2.0".
bool isNewer(std::string_view a, std::string_view b);

}  // namespace Updater

}  // namespace tidemark
