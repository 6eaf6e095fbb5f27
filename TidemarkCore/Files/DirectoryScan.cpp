#include "DirectoryScan.h"

#include "NameOrder.h"

#include <algorithm>
#include <string>

namespace tidemark::DirectoryScan {

namespace {

void sortByName(std::vector<DirectoryEntry>& entries)
{
    struct Keyed {
        std::string key;
        DirectoryEntry entry;
    };
    const NameOrder order;
    std::vector<Keyed> keyed;
    keyed.reserve(entries.size());
    for (DirectoryEntry& entry : entries) {
        std::string key = order.sortKey(entry.name);
        keyed.push_back({std::move(key), std::move(entry)});
    }
    std::ranges::stable_sort(keyed, {}, &Keyed::key);
    std::ranges::transform(
        keyed, entries.begin(), [](Keyed& each) { return std::move(each.entry); });
}

}  // namespace

bool isSweepable(const FileFacts& facts)
{
    return facts.isRegularFile && facts.cloudStatus != CloudStatus::notDownloaded;
}

std::vector<FileInfo> files(const FileURL& folder, FileManager& fileManager)
{
    std::vector<DirectoryEntry> entries = fileManager.contentsOfDirectory(folder);
    std::erase_if(entries, [](const DirectoryEntry& entry) { return !isSweepable(entry.facts); });
    sortByName(entries);

    std::vector<FileInfo> infos;
    infos.reserve(entries.size());
    for (const DirectoryEntry& entry : entries)
        infos.push_back(
            FileInfo::withFacts(fileManager, folder.appending(entry.name), entry.facts));
    return infos;
}

}  // namespace tidemark::DirectoryScan
