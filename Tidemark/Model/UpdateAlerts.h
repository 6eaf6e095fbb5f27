#pragma once

#include "UpdateAlert.h"

#include <cstddef>
#include <functional>

namespace tidemark {

/// Shows alerts to the user, one at a time. Nothing here waits or throws. For the main thread.
class UpdateAlerts {
public:
    /// `button` is an index of the alert's buttons.
    using Answered = std::function<void(std::size_t button)>;

    virtual ~UpdateAlerts() = default;

    /// Shows `alert` in front of everything. `answered` is called once, from the event loop, when it has gone;
    /// an alert that is closed by other means than a button counts as answered by the last one. Another alert
    /// may be shown from there on.
    virtual void show(const UpdateAlert& alert, Answered answered) = 0;

    /// Brings the alert that is up to the front again.
    virtual void bringForward() = 0;

    /// Takes the alert that is up away, if there is one; it stays unanswered.
    virtual void withdraw() = 0;
};

}  // namespace tidemark
