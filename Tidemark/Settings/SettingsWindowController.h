#pragma once

#include "AppModel.h"
#include "BringToFront.h"

#include <QDialog>

#include <memory>

namespace tidemark {

/// Makes the settings window when it is first opened and keeps it, closed or open, as long as it lives.
class SettingsWindowController {
public:
    /// `model` outlives it.
    explicit SettingsWindowController(AppModel& model);
    ~SettingsWindowController();

    /// Opens the window in front of all others. In it the shortcuts of `actions` work.
    void open(const QList<QAction*>& actions = {});

    /// Null before the first opening.
    QDialog* window() { return m_window.get(); }

private:
    AppModel& m_model;
    std::unique_ptr<QDialog> m_window;
    BringToFront m_front{nullptr};
};

}  // namespace tidemark
