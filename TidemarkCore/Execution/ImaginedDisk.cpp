#include "ImaginedDisk.h"

#include "Destination.h"

#include <algorithm>
#include <numeric>

namespace tidemark {

ImaginedDisk::ImaginedDisk(FileManager& real, const SweepPlan& plan)
    : m_real(&real)
    , m_plan(&plan)
    , m_bySource(plan.actions.size())
    , m_hasLeft(plan.actions.size())
{
    std::iota(m_bySource.begin(), m_bySource.end(), 0U);
    std::ranges::stable_sort(m_bySource, {}, [&](std::uint32_t action) -> const std::string& {
        return plan.actions[action].source.path();
    });
    for (const PlannedAction& action : plan.actions)
        folderAt(Destination::at(action.source.path()).folder).holdsSources = true;
}

bool ImaginedDisk::isTaken(std::string_view folder, std::string_view name)
{
    const Folder& known = folderAt(folder);
    if (known.taken.contains(name))
        return true;
    if (known.holdsSources && hasLeft(joined(folder, name)))
        return false;
    return !known.isImagined && m_real->fileExists(FileURL(joined(folder, name)));
}

void ImaginedDisk::makeFolder(std::string_view path)
{
    if (folderAt(path).exists)
        return;
    const FileURL url = FileURL::directory(std::string(path));
    const auto [parent, name] = Destination::at(path);
    if (!isTaken(parent, name) && parent != path) {
        makeFolder(parent);  // NOLINT(misc-no-recursion): as deep as the path
        take(parent, name);
        folderAt(path).isImagined = true;
    } else if (folderAt(parent).taken.contains(name) || !m_real->directoryExists(url)) {
        throw std::filesystem::filesystem_error("cannot make a folder", url.path(),
            std::make_error_code(std::errc::not_a_directory));
    }
    folderAt(path).exists = true;
}

bool ImaginedDisk::isThere(std::size_t action) const
{
    return !hasLeft(m_plan->actions[action].source.path());
}

void ImaginedDisk::take(std::string_view folder, std::string_view name)
{
    folderAt(folder).taken.emplace(name);
}

ImaginedDisk::Folder& ImaginedDisk::folderAt(std::string_view path)
{
    if (const auto known = m_folders.find(path); known != m_folders.end())
        return known->second;
    return m_folders.emplace(path, Folder()).first->second;
}

bool ImaginedDisk::hasLeft(std::string_view path) const
{
    const auto sourceOf = [&](std::uint32_t action) -> std::string_view {
        return m_plan->actions[action].source.path();
    };
    const auto range = std::ranges::equal_range(m_bySource, path, {}, sourceOf);
    return std::any_of(
        range.begin(), range.end(), [&](std::uint32_t action) { return m_hasLeft[action]; });
}

const std::string& ImaginedDisk::joined(std::string_view folder, std::string_view name)
{
    m_path.assign(folder == "/" ? "" : folder).append("/").append(name);
    return m_path;
}

}  // namespace tidemark
