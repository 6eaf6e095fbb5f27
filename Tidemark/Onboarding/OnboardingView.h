#pragma once

#include "AppModel.h"

#include <QWidget>

#include <functional>

class QPushButton;

namespace tidemark {

/// Says what Tidemark will do, and lets the user add folders and start.
class OnboardingView : public QWidget {
public:
    /// Of its window, in device-independent pixels.
    static constexpr int width = 486;

    /// `model` outlives it. `dismiss` closes the window once the user has started.
    OnboardingView(AppModel& model, std::function<void()> dismiss);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void startOnReturn();

    QPushButton* m_start;
};

}  // namespace tidemark
