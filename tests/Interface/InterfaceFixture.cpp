#include "InterfaceFixture.h"

#include <QAccessible>
#include <QLayout>

namespace tidemark {

namespace {

void collectTexts(const QLayout& layout, std::vector<std::string>& texts)
{
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem* item = layout.itemAt(index);
        const QWidget* widget = item->widget();
        if (widget && widget->isHidden())
            continue;
        const QString text = widget ? widget->property("text").toString() : QString{};
        if (!text.isEmpty())
            texts.push_back(text.toStdString());
        if (widget && widget->layout())
            collectTexts(*widget->layout(), texts);
        else if (item->layout())
            collectTexts(*item->layout(), texts);
    }
}

void collectNames(QAccessibleInterface& element, std::vector<std::string>& names)
{
    const QString name = element.text(QAccessible::Name);
    if (!name.isEmpty() && !element.state().invisible)
        names.push_back(name.toStdString());
    for (int index = 0; index < element.childCount(); ++index)
        collectNames(*element.child(index), names);
}

std::string shown(const QAction& action)
{
    if (action.isSeparator())
        return "----";
    return (action.isEnabled() ? "" : "(off) ") + action.text().toStdString();
}

}  // namespace

AppModel& InterfaceTest::startWithUpdates()
{
    m_updateServices.emplace(m_updates.services());
    return start();
}

TidemarkApp& InterfaceTest::launch(const LaunchOptions& options)
{
    m_app.reset();
    start();
    m_app = std::make_unique<TidemarkApp>(model(), [this] { m_hasQuit = true; });
    m_app->start(options);
    runPending();
    return *m_app;
}

std::vector<std::string> InterfaceTest::menuTexts(MenuContent& menu)
{
    std::vector<std::string> texts;
    for (const QAction* action : menu.menu().actions())
        texts.push_back(shown(*action));
    return texts;
}

QAction* InterfaceTest::item(MenuContent& menu, const QString& text)
{
    for (QAction* action : menu.menu().actions()) {
        if (action->text() == text)
            return action;
    }
    throw std::runtime_error{"no item " + text.toStdString()};
}

Journal InterfaceTest::journalOf(const std::vector<std::string>& names)
{
    Journal journal;
    SweepRecord& sweep = journal.sweeps.emplace_back();
    double second = 0;
    for (const std::string& name : names)
        sweep.entries.push_back({.op = JournalEntry::Op::move,
            .from = "/in/" + name,
            .to = "/out/" + name,
            .at = Date{Seconds{++second}}});
    return journal;
}

std::vector<std::string> accessibleNames(QWidget& root)
{
    std::vector<std::string> names;
    collectNames(*QAccessible::queryAccessibleInterface(&root), names);
    return names;
}

std::vector<std::string> shownTexts(const QWidget& root)
{
    std::vector<std::string> texts;
    if (root.layout())
        collectTexts(*root.layout(), texts);
    return texts;
}

}  // namespace tidemark
