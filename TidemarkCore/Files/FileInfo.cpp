#include "FileInfo.h"

#include "FrontMatter.h"
#include "Text.h"

namespace tidemark {

static constexpr std::size_t longestFrontMatter = 8192;  // bytes

static bool isMarkdown(const FileURL& url)
{
    const std::string extension = lowercased(pathExtension(url.lastPathComponent()));
    return extension == "md" || extension == "markdown";
}

FileInfo FileInfo::readingResourceValues(FileManager& fileManager, const FileURL& url)
{
    return withFacts(fileManager, url, fileManager.facts(url));
}

FileInfo FileInfo::withFacts(FileManager& fileManager, FileURL url, const FileFacts& facts)
{
    FileInfo info;
    info.modified = facts.modified.value_or(distantPast);
    info.added = facts.added.value_or(info.modified);
    info.lastOpened = facts.lastOpened.value_or(info.modified);
    info.created = facts.created.value_or(info.modified);
    info.isScreenCapture = facts.isScreenCapture;
    if (isMarkdown(url))
        info.frontMatter = FrontMatter::read(fileManager, url, longestFrontMatter);
    info.url = std::move(url);
    return info;
}

}  // namespace tidemark
