#include "ImaginedDisk.h"

#include "Destination.h"

#include <algorithm>

namespace tidemark {

ImaginedDisk::ImaginedDisk(FileManager& real, const SweepPlan& plan)
    : m_real(&real)
    , m_plan(&plan)
    , m_hasLeft(plan.actions.size())
{
    for (std::uint32_t action = 0; action < plan.actions.size(); ++action)
        folderAt(Destination::at(plan.actions[action].source.path()).folder)
            .sources.push_back(action);
    for (auto& [path, folder] : m_folders) {
        std::ranges::stable_sort(
            folder.sources, {}, [this](std::uint32_t action) { return sourceName(action); });
    }
}

bool ImaginedDisk::isTaken(std::string_view folder, std::string_view name)
{
    const Folder& known = folderAt(folder);
    if (known.taken.contains(name))
        return true;
    return !known.isImagined && !hasLeft(known, name) && existsReally(folder, name);
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
        throw std::filesystem::filesystem_error(
            "cannot make a folder", url.path(), std::make_error_code(std::errc::not_a_directory));
    }
    folderAt(path).exists = true;
}

bool ImaginedDisk::isThere(std::size_t action)
{
    const auto [folder, name] = Destination::at(m_plan->actions[action].source.path());
    const Folder& known = folderAt(folder);
    return known.taken.contains(name) || !hasLeft(known, name);
}

void ImaginedDisk::leave(std::size_t action)
{
    m_hasLeft[action] = true;
    // It may be another file by now, which an earlier action has brought there.
    const auto [folder, name] = Destination::at(m_plan->actions[action].source.path());
    Names& taken = folderAt(folder).taken;
    if (const auto newcomer = taken.find(name); newcomer != taken.end())
        taken.erase(newcomer);
}

void ImaginedDisk::take(std::string_view folder, std::string_view name)
{
    folderAt(folder).taken.emplace(name);
}

ImaginedDisk::Folder& ImaginedDisk::folderAt(std::string_view path)
{
    if (const auto known = m_spellings.find(path); known != m_spellings.end())
        return *known->second;
    std::string spelling(path);
    std::string resolved = spelling;
    try {
        resolved = m_real->resolvingLinks(FileURL::directory(spelling)).path();
    } catch (const std::filesystem::filesystem_error&) {
        // A folder that cannot be searched says so when something is wanted in it.
    }
    Folder& folder = m_folders[std::move(resolved)];
    m_spellings.emplace(std::move(spelling), &folder);
    return folder;
}

std::string_view ImaginedDisk::sourceName(std::uint32_t action) const
{
    return m_plan->actions[action].source.lastPathComponent();
}

bool ImaginedDisk::hasLeft(const Folder& folder, std::string_view name) const
{
    auto source = std::lower_bound(folder.sources.begin(), folder.sources.end(), name,
        [this](
            std::uint32_t action, std::string_view wanted) { return sourceName(action) < wanted; });
    // One file may be in the plan several times.
    for (; source != folder.sources.end() && sourceName(*source) == name; ++source) {
        if (m_hasLeft[*source])
            return true;
    }
    return false;
}

bool ImaginedDisk::existsReally(std::string_view folder, std::string_view name)
{
    m_path.assign(folder == "/" ? "" : folder).append("/").append(name);
    return m_real->fileExists(FileURL(m_path));
}

}  // namespace tidemark
