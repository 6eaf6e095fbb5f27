#pragma once

#include <string>

namespace tidemark {

/// Has another process run a shell script and waits for its end; the test fails if the script does. What it
/// does to files is done by another program.
void otherProcess(const std::string& script);

}  // namespace tidemark
