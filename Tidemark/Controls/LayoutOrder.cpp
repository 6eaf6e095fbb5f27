#include "LayoutOrder.h"

#include <QLayout>
#include <QWidget>

#include <map>

namespace tidemark {

namespace {

void collect(const QLayout& layout, QList<QWidget*>& widgets)
{
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem* item = layout.itemAt(index);
        if (QWidget* widget = item->widget()) {
            widgets.push_back(widget);
            if (widget->layout())
                collect(*widget->layout(), widgets);
        } else if (item->layout()) {
            collect(*item->layout(), widgets);
        }
    }
}

void orderFocus(const QList<QWidget*>& widgets)
{
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0)
            continue;
        if (previous)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}

/// Screen readers are told of children in the order in which their parent holds them.
void orderChildren(const QWidget& parent, const QList<QWidget*>& wanted)
{
    QList<QWidget*> held;
    for (QObject* child : parent.children()) {
        auto* widget = qobject_cast<QWidget*>(child);
        if (widget && wanted.contains(widget))
            held.push_back(widget);
    }
    if (held == wanted)
        return;
    for (QWidget* widget : wanted)
        widget->raise();  // to the end of what the parent holds
}

}  // namespace

void orderAsLaidOut(QWidget& root)
{
    QList<QWidget*> widgets;
    if (root.layout())
        collect(*root.layout(), widgets);
    orderFocus(widgets);
    std::map<QWidget*, QList<QWidget*>> childrenOf;
    for (QWidget* widget : widgets)
        childrenOf[widget->parentWidget()].push_back(widget);
    for (const auto& [parent, children] : childrenOf)
        orderChildren(*parent, children);
}

}  // namespace tidemark
