#pragma once

#include "ApplicationService.h"
#include "FileURL.h"
#include "HandOver.h"

#include <QTimer>

#include <functional>
#include <string>

namespace tidemark {

/// Passes on what desktops ask over the session bus to a process that serves the support folder but is
/// not on the bus itself, such as `tidemarkctl watch`. For a process that the bus has started for this;
/// it ends when nothing has been asked for a few seconds. For the main thread.
class ActivationRelay {
public:
    /// `tellFailure` is given the reason when something could not be passed on. It may run an event loop,
    /// in which more is passed on, until the reason has been read.
    ActivationRelay(FileURL supportFolder, std::function<void(const std::string&)> tellFailure);

private:
    void bringForward(const std::string& activationToken);
    void perform(AppAction action);
    void passOn(const HandOver& handOver);
    void tell(const std::string& failure);
    void waitForMore();

    const FileURL m_supportFolder;
    const std::function<void(const std::string&)> m_tellFailure;
    QTimer m_patience;
    int m_messages = 0;  ///< Of failures that are still to be read.
    ApplicationService m_service;
};

}  // namespace tidemark
