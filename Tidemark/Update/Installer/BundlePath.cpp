#include "BundlePath.h"

#include <algorithm>
#include <cstddef>

namespace tidemark::BundlePath {

namespace {

constexpr std::size_t longestPath = 1024;
constexpr std::size_t longestComponent = 255;
constexpr int deepest = 32;

bool isPlain(char character)
{
    return character >= ' ' && character <= '~' && character != '\\';
}

/// Calls `use` with every component, the empty ones too, for as long as it returns true; whether it always did.
template <typename Use>
bool everyComponent(std::string_view path, Use use)
{
    for (;;) {
        const std::size_t slash = path.find('/');
        if (!use(path.substr(0, slash)))
            return false;
        if (slash == std::string_view::npos)
            return true;
        path.remove_prefix(slash + 1);
    }
}

bool isShort(std::string_view path)
{
    return !path.empty() && path.size() <= longestPath && std::ranges::all_of(path, isPlain);
}

}  // namespace

bool isSafe(std::string_view path)
{
    const auto isName = [](std::string_view name) {
        return !name.empty() && name != "." && name != ".." && name.size() <= longestComponent;
    };
    return isShort(path) && std::ranges::count(path, '/') < deepest && everyComponent(path, isName);
}

bool staysInside(std::string_view path, std::string_view target, int depth)
{
    if (!isShort(target) || target.starts_with('/'))
        return false;
    auto level = std::ranges::count(path, '/');
    if (level < depth)
        return false;
    // Where a link in the middle leads elsewhere, ".." after it would mean another folder than the text says:
    // so ".." may stand at the begin only.
    bool hasDescended = false;
    return everyComponent(target, [&](std::string_view name) {
        if (name.empty() || name == "." || name.size() > longestComponent)
            return false;
        if (name != "..") {
            hasDescended = true;
            return true;
        }
        --level;
        return !hasDescended && level >= depth;
    });
}

}  // namespace tidemark::BundlePath
