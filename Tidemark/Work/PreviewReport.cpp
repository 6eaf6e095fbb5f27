#include "PreviewReport.h"

#include "FolderChanges.h"

namespace tidemark {

namespace {

/// In the form of the document, where paths are plain.
struct ActionDocument {
    RehearsedAction action;

    void encode(JSONEncoder& encoder) const
    {
        const PlannedAction& planned = action.planned;
        encoder.object([&] {
            encoder.member("action", planned.action);
            if (action.destination)
                encoder.member("destination", action.destination->path());
            encoder.member("ruleID", planned.ruleID);
            encoder.member("ruleName", planned.ruleName);
            encoder.member("source", planned.source.path());
            encoder.member("stampCreated", planned.stampCreated);
        });
    }
};

}  // namespace

void PreviewReport::encode(JSONEncoder& encoder, const std::function<void()>& didEncode) const
{
    encoder.object([&] {
        encoder.memberArray("actions", [&] {
            for (std::size_t index = 0; index < rehearsal.size(); ++index) {
                encoder.element(ActionDocument{rehearsal[index]});
                didEncode();
            }
        });
    });
}

PreviewReport previewSweep(Workspace& workspace, Date now, SweepObserver& observer)
{
    workspace.requireReadableSettings();
    SweepController& controller = workspace.controller();
    requireNoSupportFolder(controller.settings(), workspace);
    return {.isPaused = controller.isPaused(),
        .watchesFolders = !controller.settings().folders.empty(),
        .rehearsal = controller.preview(now, &observer)};
}

}  // namespace tidemark
