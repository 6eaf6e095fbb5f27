#pragma once

#include <string_view>

namespace tidemark {

/// The three standard streams of this process.
namespace StandardStreams {

/// Occupies the numbers of those that are closed, so that no file opened later is taken for one of them:
/// writing to a closed one goes on failing. A reader that has gone and a file that grows beyond the
/// user's limit are errors from now on, not the end of the process.
void secure();

/// Says `reason` in one line on standard error, with nothing in it that a terminal would act upon.
void complain(std::string_view reason);

}  // namespace StandardStreams

}  // namespace tidemark
