#include "ImaginedDisk.h"

#include "Destination.h"

#include <algorithm>

namespace tidemark {

static std::size_t hashOf(std::string_view name)
{
    return std::hash<std::string_view>()(name);
}

ImaginedDisk::ImaginedDisk(FileManager& real, const SweepPlan& plan)
    : m_real(&real)
    , m_plan(&plan)
    , m_files(plan.actions.size())
    , m_hasLeft(plan.actions.size())
{
    for (std::uint32_t action = 0; action < plan.actions.size(); ++action) {
        const auto [folder, name] = Destination::at(plan.actions[action].source.path());
        folderAt(folder).sources.push_back({hashOf(name), action});
    }
    for (auto& [path, folder] : m_folders) {
        std::ranges::sort(folder.sources, {},
            [](const Source& source) { return std::pair(source.nameHash, source.action); });
        findSameFiles(folder);
    }
}

/// One file may be in the plan several times.
void ImaginedDisk::findSameFiles(const Folder& folder)
{
    for (auto source = folder.sources.begin(); source != folder.sources.end(); ++source) {
        m_files[source->action] = source->action;
        for (auto other = source;
             other != folder.sources.begin() && (--other)->nameHash == source->nameHash;) {
            if (sourceName(other->action) == sourceName(source->action)) {
                m_files[source->action] = m_files[other->action];
                break;
            }
        }
    }
}

bool ImaginedDisk::isTaken(std::string_view folder, std::string_view name)
{
    Folder& known = folderAt(folder);
    if (known.taken.contains(name))
        return true;
    return !known.isImagined && !hasLeft(known, name) && existsReally(known, folder, name);
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
    return !m_hasLeft[m_files[action]]
        || folderOf(action).taken.contains(sourceName(static_cast<std::uint32_t>(action)));
}

void ImaginedDisk::leave(std::size_t action)
{
    // It may be another file by now, which an earlier action has brought there.
    if (m_hasLeft[m_files[action]])
        folderOf(action).taken.erase(sourceName(static_cast<std::uint32_t>(action)));
    m_hasLeft[m_files[action]] = true;
}

void ImaginedDisk::take(std::string_view folder, std::string_view name)
{
    folderAt(folder).taken.insert(name);
}

ImaginedDisk::Folder& ImaginedDisk::folderAt(std::string_view path)
{
    if (m_lastSpelling != nullptr && m_lastSpelling->first == path)
        return *m_lastSpelling->second;
    if (const auto known = m_spellings.find(path); known != m_spellings.end()) {
        m_lastSpelling = &*known;
        return *known->second;
    }
    std::string spelling(path);
    std::string resolved = spelling;
    try {
        resolved = m_real->resolvingLinks(FileURL::directory(spelling)).path();
    } catch (const std::filesystem::filesystem_error&) {
        // A folder that cannot be searched says so when something is wanted in it.
    }
    Folder& folder = m_folders.try_emplace(std::move(resolved), &m_memory).first->second;
    m_spellings.emplace(std::move(spelling), &folder);
    return folder;
}

ImaginedDisk::Folder& ImaginedDisk::folderOf(std::size_t action)
{
    return folderAt(Destination::at(m_plan->actions[action].source.path()).folder);
}

std::string_view ImaginedDisk::sourceName(std::uint32_t action) const
{
    return m_plan->actions[action].source.lastPathComponent();
}

bool ImaginedDisk::hasLeft(const Folder& folder, std::string_view name) const
{
    const std::size_t hash = hashOf(name);
    auto source = std::ranges::lower_bound(folder.sources, hash, {}, &Source::nameHash);
    for (; source != folder.sources.end() && source->nameHash == hash; ++source) {
        if (sourceName(source->action) == name)
            return m_hasLeft[m_files[source->action]];
    }
    return false;
}

bool ImaginedDisk::existsReally(Folder& known, std::string_view folder, std::string_view name)
{
    // From so many questions on, one list of all that is there is cheaper.
    constexpr std::size_t lookUpsWorthAList = 500;
    if (known.realNames && !std::ranges::binary_search(*known.realNames, hashOf(name)))
        return false;
    if (++known.lookUps == lookUpsWorthAList)
        listRealNames(known, folder);
    m_path.assign(folder == "/" ? "" : folder).append("/").append(name);
    return m_real->fileExists(FileURL(m_path));
}

void ImaginedDisk::listRealNames(Folder& known, std::string_view folder)
{
    std::vector<std::size_t> hashes;
    try {
        if (!m_real->visitNames(FileURL::directory(std::string(folder)),
                [&](std::string_view name) { hashes.push_back(hashOf(name)); }))
            return;
    } catch (const std::filesystem::filesystem_error&) {
        return;  // a folder that can be searched need not be readable
    }
    std::ranges::sort(hashes);
    known.realNames = std::move(hashes);
}

}  // namespace tidemark
