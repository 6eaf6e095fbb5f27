#include "RemoteOperations.h"

#include "CommandFailure.h"
#include "JSONCoders.h"
#include "Text.h"

namespace tidemark {

namespace {

void tell(const WorkProgress& progress, SweepObserver& observer)
{
    if (progress.scanning)
        observer.willScan(FileURL::directory(*progress.scanning));
    if (progress.performing)
        observer.willPerform(progress.performing->index, progress.performing->count);
}

}  // namespace

RemoteOperations::RemoteOperations(RemoteClient client)
    : m_client(std::move(client))
{
}

SweepReport RemoteOperations::sweep(std::optional<Date> now, SweepObserver& observer)
{
    return WorkAnswer::decoded<SweepReport>(
        answerTo({.kind = WorkRequest::Kind::sweep, .now = now}, observer));
}

UndoReport RemoteOperations::undo(std::optional<Date> now)
{
    SweepObserver nobody;
    return WorkAnswer::decoded<UndoReport>(
        answerTo({.kind = WorkRequest::Kind::undo, .now = now}, nobody));
}

PauseChange RemoteOperations::setPaused(bool isPaused)
{
    SweepObserver nobody;
    const auto kind = isPaused ? WorkRequest::Kind::pause : WorkRequest::Kind::resume;
    return WorkAnswer::decoded<PauseChange>(answerTo({.kind = kind}, nobody));
}

FolderChanges RemoteOperations::addFolders(const std::vector<GivenPath>& paths)
{
    for (const GivenPath& path : paths)
        requireTextPath(path.clean);
    SweepObserver nobody;
    return WorkAnswer::decoded<FolderChanges>(
        answerTo({.kind = WorkRequest::Kind::addFolders, .paths = paths}, nobody));
}

FolderChanges RemoteOperations::removeFolders(const std::vector<GivenPath>& paths)
{
    for (const GivenPath& path : paths) {
        if (!isValidUTF8(path.clean))
            throw CommandFailure{path.clean + " is not watched"};
    }
    SweepObserver nobody;
    return WorkAnswer::decoded<FolderChanges>(
        answerTo({.kind = WorkRequest::Kind::removeFolders, .paths = paths}, nobody));
}

void RemoteOperations::bringForward(const std::string& activationToken)
{
    SweepObserver nobody;
    const JSONDocument answer{answerTo({.kind = WorkRequest::Kind::bringForward,
                                           .activationToken = withValidUTF8(activationToken)},
                                  nobody),
        "answer"};
    WorkAnswer::requireSuccess(answer.root());
}

std::string RemoteOperations::answerTo(const WorkRequest& request, SweepObserver& observer)
{
    m_client.send(JSONCoders::encode(request));
    while (std::optional<RemoteClient::Message> message = m_client.receive()) {
        if (message->isFinal)
            return std::move(message->text);
        tell(JSONCoders::decode<WorkProgress>(std::move(message->text), "progress"), observer);
    }
    throw CommandFailure{
        "Tidemark ended before it was done; \"tidemarkctl activity\" shows what was done"};
}

}  // namespace tidemark
