#include "DirectoryScan.h"

#include "NameOrder.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace tidemark::DirectoryScan {

namespace {

/// The indices of `entries` in the order of their names.
std::vector<std::uint32_t> orderByName(const std::vector<DirectoryEntry>& entries)
{
    struct Key {
        std::size_t start = 0;
        std::uint32_t size = 0;
        std::uint32_t entry = 0;
    };
    const NameOrder order;
    // Of all keys, one behind the other: for many files this is much less memory.
    std::string bytes;
    constexpr std::size_t usualKeySize = 64;
    bytes.reserve(entries.size() * usualKeySize);
    std::vector<Key> keys;
    keys.reserve(entries.size());
    for (const DirectoryEntry& entry : entries) {
        const std::size_t start = bytes.size();
        order.appendSortKey(entry.name, bytes);
        keys.push_back({start, static_cast<std::uint32_t>(bytes.size() - start),
            static_cast<std::uint32_t>(keys.size())});
    }
    std::ranges::stable_sort(keys, {},
        [&](const Key& key) { return std::string_view(bytes).substr(key.start, key.size); });
    std::vector<std::uint32_t> sorted(keys.size());
    std::ranges::transform(keys, sorted.begin(), &Key::entry);
    return sorted;
}

}  // namespace

bool isSweepable(const FileFacts& facts)
{
    return facts.isRegularFile && facts.cloudStatus != CloudStatus::notDownloaded;
}

std::vector<FileInfo> files(const FileURL& folder, FileManager& fileManager)
{
    return files(folder, fileManager, [](std::string_view) { return true; });
}

std::vector<FileInfo> files(
    const FileURL& folder, FileManager& fileManager, const NameTest& flagMatters)
{
    std::vector<DirectoryEntry> entries = fileManager.contentsWithFlags(folder, flagMatters);
    std::erase_if(entries, [](const DirectoryEntry& entry) { return !isSweepable(entry.facts); });

    std::vector<FileInfo> infos;
    infos.reserve(entries.size());
    for (const std::uint32_t index : orderByName(entries)) {
        const DirectoryEntry& entry = entries[index];
        infos.push_back(
            FileInfo::withFacts(fileManager, folder.appending(entry.name), entry.facts));
    }
    return infos;
}

}  // namespace tidemark::DirectoryScan
