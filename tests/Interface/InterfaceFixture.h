#pragma once

#include "FakeUpdates.h"
#include "ModelFixture.h"
#include "TidemarkApp.h"

#include <QAction>
#include <QWidget>

#include <memory>
#include <string>
#include <vector>

namespace tidemark {

/// A model with the application's face on it, on a screen that nobody sees.
class InterfaceTest : public ModelTest {
public:
    ~InterfaceTest() override
    {
        m_app.reset();
        m_model.reset();
    }

protected:
    /// A model whose check at launch is under way.
    AppModel& startWithUpdates();

    /// Makes model and application, and shows the application as when the user starts it.
    TidemarkApp& launch(const LaunchOptions& options = {});
    TidemarkApp& app() { return *m_app; }

    /// What the menu shows: "----" for a divider, "(off) " before what cannot be chosen.
    std::vector<std::string> menuTexts(MenuContent& menu);
    QAction* item(MenuContent& menu, const QString& text);

    /// A journal of one sweep that moved these files, oldest first.
    static Journal journalOf(const std::vector<std::string>& names);

    FakeUpdates m_updates{UserDefaults::file()};
    bool m_hasQuit = false;
    std::unique_ptr<TidemarkApp> m_app;
};

/// The texts of all labels below `root` that are not hidden, from top to bottom.
std::vector<std::string> shownTexts(const QWidget& root);

/// What a screen reader is told of everything below `root`, in its order: the names that are not empty.
std::vector<std::string> accessibleNames(QWidget& root);

/// Every widget of this type, also of one that Qt's own look-up does not tell from its base.
template <typename Widget>
std::vector<Widget*> allOf(const QWidget& root)
{
    std::vector<Widget*> widgets;
    for (QWidget* each : root.findChildren<QWidget*>()) {
        if (auto* widget = dynamic_cast<Widget*>(each))
            widgets.push_back(widget);
    }
    return widgets;
}

/// The widget of this type and accessible name or text; null if there is none.
template <typename Widget>
Widget* findNamed(const QWidget& root, const QString& name)
{
    for (Widget* each : root.findChildren<Widget*>()) {
        if (each->accessibleName() == name || each->property("text").toString() == name)
            return each;
    }
    return nullptr;
}

}  // namespace tidemark
