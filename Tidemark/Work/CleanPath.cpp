#include "CleanPath.h"

#include <filesystem>

namespace tidemark {

namespace fs = std::filesystem;

namespace {

fs::path parentOf(const fs::path& folder)
{
    std::error_code ignored;
    if (fs::is_symlink(folder, ignored)) {
        const fs::path target = fs::canonical(folder, ignored);
        if (!ignored)
            return target.parent_path();
    }
    return folder.parent_path();
}

}  // namespace

std::string cleanAbsolutePath(std::string_view path)
{
    const fs::path given{path};
    fs::path clean = given.is_absolute() ? fs::path{"/"} : fs::current_path();
    for (const fs::path& component : given.relative_path()) {
        if (component.empty() || component == ".")
            continue;
        if (component == "..")
            clean = parentOf(clean);
        else
            clean /= component;
    }
    return clean.string();
}

}  // namespace tidemark
