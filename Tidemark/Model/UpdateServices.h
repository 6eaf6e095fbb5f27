#pragma once

#include "Countdown.h"
#include "UpdateAlerts.h"
#include "UpdateFinder.h"
#include "UpdateInstaller.h"
#include "UserDefaults.h"

#include <functional>
#include <string>

namespace tidemark {

/// What finding, offering and installing updates needs; it outlives the model.
struct UpdateServices {
    UpdateFinder& finder;
    UpdateAlerts& alerts;
    UpdateInstaller& installer;
    UserDefaults& defaults;
    Countdown& countdown;
    std::string
        downloadPage;  ///< For people, when installing fails: host and path, without scheme.
    std::function<void()> quit;  ///< Ends the application, as its user would.
};

}  // namespace tidemark
