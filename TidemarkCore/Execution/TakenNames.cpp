#include "TakenNames.h"

namespace tidemark {

bool TakenNames::isTaken(
    const HeldFolder& folder, std::string_view name, const std::function<bool()>& look)
{
    auto& names = m_names[folder.identity()];
    if (names.contains(name))
        return true;
    if (!look())
        return false;
    names.emplace(name);
    return true;
}

void TakenNames::forget(const HeldEntry& entry)
{
    const auto folder = m_names.find(entry.folder.identity());
    if (folder == m_names.end())
        return;
    if (const auto name = folder->second.find(entry.url.lastPathComponent());
        name != folder->second.end())
        folder->second.erase(name);
}

}  // namespace tidemark
