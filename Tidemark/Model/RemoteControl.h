#pragma once

#include "AppModel.h"
#include "RemoteServer.h"
#include "WorkMessages.h"

namespace tidemark {

/// Carries out through the model what commands of other processes ask for. For the main thread.
class RemoteControl {
public:
    /// Brings the windows to the front. The token is the right to do so on Wayland, and may be empty.
    using BringForward = std::function<void(const std::string& activationToken)>;

    /// Begins to serve the support folder, whose lock this process holds. `model` outlives it. Throws
    /// filesystem_error and system_error when that is not possible.
    RemoteControl(AppModel& model, const FileURL& supportFolder);

    /// Serves nobody new, and gives those who were answered a moment to take their answer in.
    ~RemoteControl();

    /// See RemoteServer.
    bool isReachable() const { return m_server.isReachable(); }

    /// May be empty: then there are no windows.
    void onBringForward(BringForward bringForward) { m_bringForward = std::move(bringForward); }

private:
    using Reply = std::shared_ptr<RemoteReply>;

    void answer(const std::string& text, const Reply& reply);
    void carryOut(const WorkRequest& request, const Reply& reply);
    void sweep(const WorkRequest& request, const Reply& reply);
    void undo(const WorkRequest& request, const Reply& reply);
    void bringForward(const WorkRequest& request, const Reply& reply);

    template <typename Result>
    void change(const Reply& reply, const std::function<Result(Workspace&)>& change);

    AppModel& m_model;
    BringForward m_bringForward;
    RemoteServer m_server;
};

}  // namespace tidemark
