#include "WatchGroup.h"

namespace tidemark {

WatchedDirectory* WatchGroup::find(std::string_view handle) const
{
    const auto found = m_directories.find(handle);
    return found == m_directories.end() ? nullptr : found->second;
}

void WatchGroup::assign(const std::string& handle, WatchedDirectory& directory)
{
    m_directories.insert_or_assign(handle, &directory);
}

void WatchGroup::unassign(const std::string& handle, const WatchedDirectory& directory)
{
    const auto found = m_directories.find(handle);
    if (found != m_directories.end() && found->second == &directory)
        m_directories.erase(found);
}

}  // namespace tidemark
