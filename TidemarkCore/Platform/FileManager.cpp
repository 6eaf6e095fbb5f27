#include "FileManager.h"

namespace tidemark {

void FileManager::moveItem(const FileURL& from, const FileURL& to)
{
    const HeldFolder source = hold(from.parent());
    const HeldFolder destination = hold(to.parent());
    moveItem(HeldEntry{source, from}, HeldEntry{destination, to});
}

std::optional<FileURL> FileManager::trashItem(const FileURL& url)
{
    const HeldFolder folder = hold(url.parent());
    return trashItem(HeldEntry{folder, url});
}

}  // namespace tidemark
