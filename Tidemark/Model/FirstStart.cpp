#include "FirstStart.h"

#include "NewFolder.h"
#include "Text.h"
#include "WatchedFolders.h"

namespace tidemark {

bool seedStandardFolders(Workspace& workspace)
{
    if (!workspace.controller().settings().folders.empty())
        return false;
    try {
        Settings settings = workspace.controller().settings();
        for (const FileURL& folder : WatchedFolders::standard()) {
            // What cannot be written into the settings cannot be watched.
            if (isValidUTF8(folder.path()))
                settings.folders.push_back(newWatchedFolder(folder.path()));
        }
        workspace.controller().update(std::move(settings));
    } catch (const std::runtime_error&) {
        // As promised. The next change is saved with them, or says why not.
    }
    return !workspace.controller().settings().folders.empty();
}

}  // namespace tidemark
