#include "NewFolder.h"

#include "CommandFailure.h"
#include "DefaultRules.h"
#include "StandardFolders.h"
#include "Text.h"

namespace tidemark {

std::vector<Rule> defaultRulesForNewFolders()
{
    const FileURL home = StandardFolders::home();
    if (!isValidUTF8(home.path()))
        throw CommandFailure{"the path of the home folder is not valid UTF-8: " + home.path()};
    const auto inHome = [&home](std::string_view folder, std::string_view name) {
        return home.appending(folder).appending(name, FileURL::Kind::directory);
    };
    return DefaultRules::all(inHome("Desktop", "Screenshots"), inHome("Downloads", "Archive"));
}

WatchedFolder newWatchedFolder(std::string path)
{
    return {.path = std::move(path), .rules = defaultRulesForNewFolders(), .sortsMarkdown = true};
}

}  // namespace tidemark
