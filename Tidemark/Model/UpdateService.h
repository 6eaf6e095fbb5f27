#pragma once

#include "UpdateInfo.h"

namespace tidemark {

/// Looks for newer versions and installs them. It tells the model what it finds and what it is at
/// (AppModel::setAvailableUpdate and its neighbours). Nothing here waits or throws. For the main thread.
class UpdateService {
public:
    virtual ~UpdateService() = default;

    /// Looks for a newer version because the user asked, who is told what came of it in any case.
    virtual void check() = 0;

    virtual void install(const UpdateInfo& update) = 0;
};

}  // namespace tidemark
