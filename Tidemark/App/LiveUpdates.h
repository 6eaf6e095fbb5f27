#pragma once

#include "BootTimeCountdown.h"
#include "FileDescriptor.h"
#include "ProcessUpdateFinder.h"
#include "ProcessUpdateInstaller.h"
#include "UpdateAlertPanel.h"
#include "UpdateServices.h"
#include "UserDefaults.h"

#include <functional>

namespace tidemark {

/// What a running application needs to find, offer and install updates, from the feed that was set when it was
/// built. For the main thread, which has a QApplication.
class LiveUpdates {
public:
    /// `log` outlives it. Throws system_error if the kernel has no timer left.
    explicit LiveUpdates(SystemLog& log);

    /// For a model that ends before this does; `quit` ends the application as its user would.
    UpdateServices services(std::function<void()> quit);

private:
    const FileDescriptor m_folder;  ///< Of the updater.
    ProcessUpdateFinder m_finder;
    ProcessUpdateInstaller m_installer;
    UpdateAlertPanel m_alerts;
    UserDefaults m_defaults;
    BootTimeCountdown m_countdown;
};

}  // namespace tidemark
