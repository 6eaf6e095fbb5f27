#pragma once

#include <string>
#include <string_view>

namespace tidemark {

/// `path` as an absolute one without ".", ".." and needless slashes; a relative one is taken from the
/// working folder. Links stay as they are named, but for those that ".." steps out of: there it leads to
/// the parent of what the link leads to, as for the kernel. Nothing has to exist. Throws filesystem_error
/// when there is no working folder.
std::string cleanAbsolutePath(std::string_view path);

}  // namespace tidemark
