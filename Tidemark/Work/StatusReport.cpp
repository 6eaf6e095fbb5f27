#include "StatusReport.h"

#include "FailureText.h"
#include "StatusText.h"

namespace tidemark {

namespace {

/// Nothing when a sweep could read the folder.
std::optional<std::string> problemOfReading(const std::string& path, FileManager& fileManager)
{
    try {
        fileManager.requireListable(FileURL::directory(path));
        return std::nullopt;
    } catch (const std::filesystem::filesystem_error& error) {
        return error.code().message();
    }
}

std::optional<std::string> problemOfJournal(SweepController& controller)
{
    try {
        controller.recentActivity(0);
        return std::nullopt;
    } catch (const std::runtime_error& error) {
        return failureText(error);
    }
}

}  // namespace

void StatusReport::Folder::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("isGranted", !problem.has_value());
        encoder.member("path", path);
        encoder.member("sortsMarkdown", sortsMarkdown);
    });
}

void StatusReport::encode(JSONEncoder& encoder) const
{
    encoder.object([&] {
        encoder.member("canUndo", canUndo);
        encoder.member("folders", folders);
        encoder.member("hasOnboarded", hasOnboarded);
        encoder.member("isPaused", isPaused);
        encoder.member("statusText", statusText);
    });
}

StatusReport readStatus(Workspace& workspace)
{
    SweepController& controller = workspace.controller();
    const Settings& settings = controller.settings();
    StatusReport report{
        .statusText = statusText(settings),
        .isPaused = settings.isPaused,
        .hasOnboarded = settings.hasOnboarded,
        .folders = {},
        .settingsProblem = workspace.settingsProblem(),
        .journalProblem = problemOfJournal(controller),
        .lastFailure = workspace.failures().load(),
    };
    report.canUndo = !report.journalProblem && controller.canUndo();
    for (const WatchedFolder& folder : settings.folders)
        report.folders.push_back({folder.path, folder.sortsMarkdown,
            problemOfReading(folder.path, workspace.fileManager())});
    return report;
}

}  // namespace tidemark
