#include "PauseChange.h"

namespace tidemark {

PauseChange changePause(Workspace& workspace, bool isPaused)
{
    PauseChange change{.wasSoAlready = !workspace.settingsProblem()
            && workspace.controller().isPaused() == isPaused};
    if (!change.wasSoAlready)
        change.replaced = workspace.changeSettings(
            [isPaused](Settings& settings) { settings.isPaused = isPaused; });
    return change;
}

}  // namespace tidemark
