#include "Settings.h"

namespace tidemark {

namespace {

/// The layout in which all folders shared one list of rules.
std::vector<WatchedFolder> decodeSharedRules(const JSONDecoder& decoder)
{
    std::vector<std::string> paths;
    if (const auto watched = decoder.find("watchedFolders"))
        paths = watched->strings();
    std::vector<Rule> rules;
    if (const auto shared = decoder.find("rules"))
        rules = shared->list<Rule>();

    std::vector<WatchedFolder> folders;
    folders.reserve(paths.size());
    for (std::string& path : paths)
        folders.push_back({.path = std::move(path), .rules = rules, .sortsMarkdown = true});
    return folders;
}

void upgrade(Rule& rule)
{
    if (rule.match.namePattern == "Screenshot*" && !rule.match.screenCaptureOnly)
        rule.match.screenCaptureOnly = true;
}

}  // namespace

void Settings::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("folders", folders);
        encoder.member("gracePeriod", gracePeriod.count());
        encoder.member("hasOnboarded", hasOnboarded);
        encoder.member("isPaused", isPaused);
        encoder.member("markdownSubfolder", markdownSubfolder);
    });
}

Settings Settings::decode(const JSONDecoder& decoder)
{
    Settings settings;
    if (const auto subfolder = decoder.find("markdownSubfolder"))
        settings.markdownSubfolder = subfolder->string();
    if (const auto gracePeriod = decoder.find("gracePeriod"))
        settings.gracePeriod = Seconds(gracePeriod->number());
    if (const auto isPaused = decoder.find("isPaused"))
        settings.isPaused = isPaused->boolean();
    if (const auto hasOnboarded = decoder.find("hasOnboarded"))
        settings.hasOnboarded = hasOnboarded->boolean();

    if (const auto folders = decoder.find("folders"))
        settings.folders = folders->list<WatchedFolder>();
    else
        settings.folders = decodeSharedRules(decoder);
    for (WatchedFolder& folder : settings.folders) {
        for (Rule& rule : folder.rules)
            upgrade(rule);
    }
    return settings;
}

}  // namespace tidemark
