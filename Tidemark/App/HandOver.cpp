#include "HandOver.h"

#include "Clock.h"
#include "CommandFailure.h"
#include "LinuxFileManager.h"
#include "RemoteOperations.h"
#include "SettingsStore.h"

namespace tidemark {

/// Whether sweeping is paused by what the settings file says.
static bool isPaused(const FileURL& supportFolder)
{
    LinuxFileManager files;
    const SystemClock clock;
    return SettingsStore{supportFolder.appending("settings.json"), files, clock}.load().isPaused;
}

static void throwIf(const std::optional<std::string>& failure)
{
    if (failure)
        throw CommandFailure{*failure};
}

static void perform(AppAction action, const FileURL& supportFolder)
{
    const auto operations = Operations::open(supportFolder, [] {});
    SweepObserver nobody;
    switch (action) {
    case AppAction::sweep:
        return throwIf(operations->sweep({}, nobody).summaryOfFailures());
    case AppAction::togglePause:
        operations->setPaused(!isPaused(supportFolder));
        return;
    case AppAction::undo:
        return throwIf(operations->undo({}).failure);
    }
}

void HandOver::carryOut(const FileURL& supportFolder) const
{
    if (options.action)
        return perform(*options.action, supportFolder);
    if (!options.isAwaited())
        return;
    auto client = RemoteClient::connect(supportFolder);
    if (!client)
        throw CommandFailure{"Tidemark was running already, and has just ended"};
    RemoteOperations{std::move(*client)}.bringForward(activationToken);
}

}  // namespace tidemark
