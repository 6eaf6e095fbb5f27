#include "TakenNames.h"

namespace tidemark {

TakenNames::TakenNames(FileManager& fileManager)
    : m_fileManager(&fileManager)
{
}

bool TakenNames::isTaken(const HeldFolder& folder, std::string_view name)
{
    // From so many taken names on, one list of all that is there is cheaper.
    constexpr std::size_t lookUpsWorthAList = 500;
    Folder& known = m_folders[folder.identity()];
    if (known.names.contains(name))
        return true;
    if (!m_fileManager->fileExists(HeldEntry{folder, folder.url().appending(name)}))
        return false;
    known.names.emplace(name);
    if (++known.lookUps == lookUpsWorthAList)
        list(folder, known);
    return true;
}

void TakenNames::list(const HeldFolder& folder, Folder& known)
{
    try {
        m_fileManager->visitNames(
            folder, [&](std::string_view name) { known.names.emplace(name); });
    } catch (const std::filesystem::filesystem_error&) {
        // A folder that can be searched need not be readable; what was read is taken all the same.
    }
}

void TakenNames::forget(const HeldEntry& entry)
{
    const auto folder = m_folders.find(entry.folder.identity());
    if (folder == m_folders.end())
        return;
    auto& names = folder->second.names;
    if (const auto name = names.find(entry.url.lastPathComponent()); name != names.end())
        names.erase(name);
}

}  // namespace tidemark
