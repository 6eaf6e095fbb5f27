#pragma once

#include "CommandFailure.h"
#include "EndSignals.h"

#include <QElapsedTimer>
#include <QMessageBox>

#include <memory>

namespace tidemark {

/// The start was given up while it waited, by somebody who knows.
class StartGivenUp : public CommandFailure {
public:
    using CommandFailure::CommandFailure;
};

/// What a start does while a `tidemarkctl` command has the support folder: such a command is over soon,
/// as a rule.
///
/// After a few seconds it tells whoever waits, who can give up. For the main thread, before its event
/// loop runs.
class StartWait {
public:
    /// `isAwaited` when somebody looks at the screen. `signals` outlives it.
    StartWait(const EndSignals& signals, bool isAwaited);

    /// To be called again and again. Throws StartGivenUp when the user or a signal has ended it.
    void goOn();

private:
    void tell();

    const EndSignals& m_signals;
    const bool m_isAwaited;
    QElapsedTimer m_since;
    std::unique_ptr<QMessageBox> m_message;
};

}  // namespace tidemark
