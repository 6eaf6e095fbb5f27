#include "FocusOrder.h"

#include <QLayout>
#include <QWidget>

namespace tidemark {

static void collect(const QLayout& layout, QList<QWidget*>& widgets)
{
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem* item = layout.itemAt(index);
        QWidget* widget = item->widget();
        if (widget && (widget->focusPolicy() & Qt::TabFocus) != 0)
            widgets.push_back(widget);
        else if (widget && widget->layout())
            collect(*widget->layout(), widgets);
        else if (item->layout())
            collect(*item->layout(), widgets);
    }
}

void orderFocus(QWidget& root)
{
    QList<QWidget*> widgets;
    if (root.layout())
        collect(*root.layout(), widgets);
    for (qsizetype index = 1; index < widgets.size(); ++index)
        QWidget::setTabOrder(widgets.at(index - 1), widgets.at(index));
}

}  // namespace tidemark
