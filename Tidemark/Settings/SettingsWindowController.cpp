#include "SettingsWindowController.h"

#include "FormWindow.h"
#include "SettingsView.h"

namespace tidemark {

SettingsWindowController::SettingsWindowController(AppModel& model)
    : m_model(model)
{
}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::open(const QList<QAction*>& actions)
{
    m_model.refresh();
    if (!m_window) {
        constexpr int width = 480;
        auto window = std::make_unique<FormWindow>(
            QStringLiteral("Tidemark Settings"), new SettingsView{m_model}, width);
        window->addActions(actions);
        window->centre();
        m_window = std::move(window);
    }
    m_front.observe(m_window.get());
}

}  // namespace tidemark
