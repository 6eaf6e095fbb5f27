#include "PauseChange.h"

namespace tidemark {

void PauseChange::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("replaced", replaced);
        encoder.member("wasSoAlready", wasSoAlready);
    });
}

PauseChange PauseChange::decode(const JSONDecoder& decoder)
{
    PauseChange change{.wasSoAlready = decoder["wasSoAlready"].boolean()};
    if (const auto replaced = decoder.find("replaced"))
        change.replaced = ReplacedSettings::decode(*replaced);
    return change;
}

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
