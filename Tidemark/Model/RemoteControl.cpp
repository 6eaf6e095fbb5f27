#include "RemoteControl.h"

#include "CommandFailure.h"
#include "FailureText.h"
#include "FolderChanges.h"
#include "JSONCoders.h"
#include "PauseChange.h"
#include "RemoteReply.h"

#include <chrono>

namespace tidemark {

RemoteControl::RemoteControl(AppModel& model, const FileURL& supportFolder)
    : m_model(model)
    , m_server(supportFolder,
          [this](const std::string& request, const Reply& reply) { answer(request, reply); })
{
}

RemoteControl::~RemoteControl()
{
    constexpr std::chrono::milliseconds patience{1000};
    m_server.flush(patience);
}

void RemoteControl::answer(const std::string& text, const Reply& reply)
{
    try {
        carryOut(JSONCoders::decode<WorkRequest>(text, "request"), reply);
    } catch (const std::exception& error) {
        reply->finish(WorkAnswer::ofFailure(failureText(error)));
    }
}

void RemoteControl::carryOut(const WorkRequest& request, const Reply& reply)
{
    switch (request.kind) {
    case WorkRequest::Kind::sweep:
        return sweep(request, reply);
    case WorkRequest::Kind::undo:
        return undo(request, reply);
    case WorkRequest::Kind::pause:
        return change<PauseChange>(
            reply, [](Workspace& workspace) { return changePause(workspace, true); });
    case WorkRequest::Kind::resume:
        return change<PauseChange>(
            reply, [](Workspace& workspace) { return changePause(workspace, false); });
    case WorkRequest::Kind::addFolders:
        return change<FolderChanges>(
            reply, [&](Workspace& workspace) { return addFolders(workspace, request.paths); });
    case WorkRequest::Kind::removeFolders:
        return change<FolderChanges>(
            reply, [&](Workspace& workspace) { return removeFolders(workspace, request.paths); });
    case WorkRequest::Kind::bringForward:
        return bringForward(request, reply);
    }
}

template <typename Result>
void RemoteControl::change(const Reply& reply, const std::function<Result(Workspace&)>& change)
{
    Result result;
    m_model.change([&](Workspace& workspace) { result = change(workspace); });
    reply->finish(WorkAnswer::of(result));
}

void RemoteControl::sweep(const WorkRequest& request, const Reply& reply)
{
    m_model.requireReadableSettings();
    const auto tell = [reply](const WorkProgress& progress) {
        if (reply->isConnected())
            reply->send(JSONCoders::encode(progress));
    };
    m_model.sweep({
        .now = request.now,
        .willScan = [tell](const FileURL& folder) { tell({.scanning = folder.path()}); },
        .willPerform =
            [tell](std::size_t index, std::size_t count) {
                tell({.performing = WorkProgress::Position{index, count}});
            },
        .done =
            [reply](const SweepOutcome& outcome) {
                reply->finish(outcome.report ? WorkAnswer::of(*outcome.report)
                                             : WorkAnswer::ofFailure(outcome.failure.value_or("")));
            },
    });
}

void RemoteControl::bringForward(const WorkRequest& request, const Reply& reply)
{
    if (!m_bringForward)
        throw CommandFailure{
            "Tidemark is running already as \"tidemarkctl watch\", which has no windows"};
    m_bringForward(request.activationToken);
    reply->finish(WorkAnswer::ofSuccess());
}

void RemoteControl::undo(const WorkRequest& request, const Reply& reply)
{
    m_model.requireReadableSettings();
    m_model.undo(request.now, [reply](const UndoOutcome& outcome) {
        reply->finish(outcome.report ? WorkAnswer::of(*outcome.report)
                                     : WorkAnswer::ofFailure(outcome.failure.value_or("")));
    });
}

}  // namespace tidemark
