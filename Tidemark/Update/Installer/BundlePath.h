#pragma once

#include <string_view>

namespace tidemark {

/// The names of what an application bundle holds, as archives and manifests write them: relative, with "/"
/// between the components. Pure functions of whatever they are given.
namespace BundlePath {

/// Whether `path` names something inside, by one spelling only: printable ASCII without backslashes, no
/// component that is empty, "." or "..", not too long and not too deep.
bool isSafe(std::string_view path);

/// Whether a link at the safe `path`, whose first component is the bundle or is in it, leads nowhere but to
/// what lies `depth` folders down or deeper: `target` is relative and takes back no more components than the
/// link has folders. It is judged by its text; links that lead to links are judged one by one.
bool staysInside(std::string_view path, std::string_view target, int depth = 0);

}  // namespace BundlePath

}  // namespace tidemark
