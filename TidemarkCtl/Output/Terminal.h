#pragma once

#include <cstddef>

namespace tidemark {

/// What can be said of the terminal behind a file descriptor.
namespace Terminal {

/// Whether text for it may carry colours: it is a terminal that knows them, and the user has not set
/// NO_COLOR.
bool showsColour(int descriptor);

/// Whether a line on it can be drawn again and again.
bool canRedraw(int descriptor);

/// How many columns it has; 80 when it does not tell.
std::size_t columns(int descriptor);

}  // namespace Terminal

}  // namespace tidemark
