#include "SecondaryColour.h"

#include "Symbols.h"

#include <QApplication>
#include <QEvent>

namespace tidemark {

namespace {

class Follower final : public QObject {
public:
    explicit Follower(QWidget& widget)
        : QObject(&widget)
        , m_widget(widget)
    {
        apply();
        m_widget.installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange)
            apply();
        return QObject::eventFilter(object, event);
    }

private:
    void apply()
    {
        const QColor colour = secondaryColour(QApplication::palette(&m_widget));
        QPalette palette = m_widget.palette();
        // Setting a palette is a change of it, too.
        if (palette.color(QPalette::Active, QPalette::WindowText) == colour)
            return;
        palette.setColor(QPalette::WindowText, colour);
        m_widget.setPalette(palette);
    }

    QWidget& m_widget;
};

}  // namespace

void useSecondaryColour(QWidget& widget)
{
    new Follower{widget};  // belongs to the widget
}

}  // namespace tidemark
