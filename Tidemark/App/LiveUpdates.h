#pragma once

#include "BootTimeCountdown.h"
#include "ProcessUpdateFinder.h"
#include "UpdateAlertPanel.h"
#include "UpdateServices.h"
#include "UserDefaults.h"

#include <functional>

namespace tidemark {

/// What a running application needs to find, offer and install updates, from the feed that was set when it was
/// built. For the main thread, which has a QApplication.
class LiveUpdates {
public:
    /// `installer` outlives it. Throws system_error if the kernel has no timer left.
    explicit LiveUpdates(UpdateInstaller& installer);

    /// For a model that ends before this does; `quit` ends the application as its user would.
    UpdateServices services(std::function<void()> quit);

private:
    UpdateInstaller& m_installer;
    ProcessUpdateFinder m_finder;
    UpdateAlertPanel m_alerts;
    UserDefaults m_defaults;
    BootTimeCountdown m_countdown;
};

}  // namespace tidemark
