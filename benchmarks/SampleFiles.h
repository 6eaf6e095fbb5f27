#pragma once

#include "FileURL.h"

#include <cstddef>
#include <string>

namespace tidemark::bench {

/// Names and files of samples. The same in every run.
namespace SampleFiles {

/// A name such as people's downloads have, a different one for each `index`.
std::string name(std::size_t index);

/// Makes the `index`-th of `count` files in the folder. Throws filesystem_error.
void make(const FileURL& folder, const std::string& name, std::size_t index, std::size_t count);

}  // namespace SampleFiles

}  // namespace tidemark::bench
