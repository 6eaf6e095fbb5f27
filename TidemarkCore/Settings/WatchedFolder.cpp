#include "WatchedFolder.h"

#include <algorithm>

namespace tidemark {

void WatchedFolder::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("path", path);
        encoder.member("rules", rules);
        encoder.member("sortsMarkdown", sortsMarkdown);
    });
}

WatchedFolder WatchedFolder::decode(const JSONDecoder& decoder)
{
    WatchedFolder folder;
    folder.path = decoder["path"].string();
    if (const auto rules = decoder.find("rules"))
        folder.rules = rules->list<Rule>();
    std::erase_if(folder.rules, [](const Rule& rule) { return rule.action.filesMarkdown(); });
    if (const auto sortsMarkdown = decoder.find("sortsMarkdown"))
        folder.sortsMarkdown = sortsMarkdown->boolean();
    return folder;
}

}  // namespace tidemark
