#pragma once

#include "Journal.h"

#include <cstddef>

namespace tidemark::bench {

/// Makes journals of past sweeps.
namespace SampleJournal {

/// A journal of so many entries in sweeps of twenty, with paths of about ninety characters.
Journal make(std::size_t entries);

}  // namespace SampleJournal

}  // namespace tidemark::bench
