#pragma once

#include "Workspace.h"

namespace tidemark {

/// Has the user's standard folders watched, with the default rules, if no folder is configured yet. Whether
/// that was so. A failure to save them is not reported: they stand in memory all the same.
bool seedStandardFolders(Workspace& workspace);

}  // namespace tidemark
