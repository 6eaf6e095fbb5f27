#pragma once

#include "FileURL.h"

#include <sys/stat.h>

namespace tidemark {

/// Everything about a file but its content: owner, mode, dates, extended attributes, access lists.
namespace FileAttributes {

/// Gives the open file `destination` what `source` has; `status` is the source's and tells owner, mode and
/// dates. Throws filesystem_error with both URLs, which serve for nothing else, when the destination's file
/// system cannot keep something, but for attributes of the namespaces "security" and "trusted".
void copy(
    int source, int destination, const struct stat& status, const FileURL& from, const FileURL& to);

}  // namespace FileAttributes

}  // namespace tidemark
