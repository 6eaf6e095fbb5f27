#pragma once

#include <functional>

namespace tidemark {

/// Sees to it that the test program has an application, which event loops need.
void requireApplication();

/// Lets the main thread's event loop run until `condition` holds, which is asked after everything that happens;
/// false if it does not in a time that is long even for a busy machine.
bool runUntil(const std::function<bool()>& condition);

/// Lets it run what waits already.
void runPending();

}  // namespace tidemark
