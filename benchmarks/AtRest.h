#pragma once

#include "IdleCase.h"
#include "RunningProcess.h"

namespace tidemark::bench {

/// What a process costs that has nothing to do: waits until it rests, then watches it for `rest`. One
/// that never rests is measured as it is. Throws runtime_error and system_error.
Idleness measureAtRest(const RunningProcess& process, Seconds rest);

}  // namespace tidemark::bench
