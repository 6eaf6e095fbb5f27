#pragma once

#include "Measured.h"

#include <string>
#include <vector>

namespace tidemark::bench {

/// Measures whole programs.
namespace ChildProcess {

/// Runs a program (the first argument, looked up in PATH) in this process's environment with its standard
/// output thrown away, from its start to its end. Throws std::runtime_error unless it ends well.
Measured measure(const std::vector<std::string>& arguments);

}  // namespace ChildProcess

}  // namespace tidemark::bench
