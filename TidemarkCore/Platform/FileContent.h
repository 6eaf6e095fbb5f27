#pragma once

#include "FileURL.h"

#include <sys/types.h>

namespace tidemark {

/// The bytes of one open file into another.
namespace FileContent {

/// Copies the first `size` bytes of `source` into the empty file `destination`, sharing them where the file
/// system can and leaving holes where the source has some. Throws filesystem_error with both URLs, which
/// serve for nothing else.
void copy(int source, int destination, off_t size, const FileURL& from, const FileURL& to);

}  // namespace FileContent

}  // namespace tidemark
