#include "WatchedFolders.h"

#include "StandardFolders.h"

#include <filesystem>

namespace tidemark::WatchedFolders {

std::vector<FileURL> standard()
{
    std::vector<FileURL> folders;
    for (const auto find : {StandardFolders::desktop, StandardFolders::downloads}) {
        try {
            if (std::optional<FileURL> folder = find())
                folders.push_back(std::move(*folder));
        } catch (const std::filesystem::filesystem_error&) {
            // A user without a home has none of these.
        }
    }
    return folders;
}

}  // namespace tidemark::WatchedFolders
