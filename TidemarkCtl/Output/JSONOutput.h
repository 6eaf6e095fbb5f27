#pragma once

#include "JSONEncoder.h"
#include "OutputStream.h"

#include <unistd.h>

namespace tidemark {

/// Prints one JSON document on standard output. Throws like OutputStream::write.
template <typename Value>
void printJSON(const Value& value)
{
    JSONEncoder encoder;
    encoder.encode(value);
    OutputStream output{STDOUT_FILENO};
    output.write(encoder.takeText());
    output.write("\n");
    output.flush();
}

}  // namespace tidemark
