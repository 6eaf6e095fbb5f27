#include "Stepper.h"

#include <QLineEdit>
#include <QSignalBlocker>
#include <QWheelEvent>

#include <algorithm>

namespace tidemark {

Stepper::Stepper(int least, int most, int step, QWidget* parent)
    : QSpinBox(parent)
{
    setRange(least, most);
    setSingleStep(step);
    lineEdit()->setReadOnly(true);
    setAlignment(Qt::AlignRight);
    setFocusPolicy(Qt::StrongFocus);  // the wheel, meant to scroll, must not take the focus
    QObject::connect(this, &QSpinBox::valueChanged, this, [this](int value) {
        m_shown = value;
        Q_EMIT stepped(value);
    });
}

void Stepper::show(int value)
{
    m_shown = value;
    const QSignalBlocker quiet{this};
    setValue(value);
    lineEdit()->setText(textFromValue(this->value()));
}

QString Stepper::textFromValue(int value) const
{
    const bool isOutside = m_shown < minimum() || m_shown > maximum();
    return QString::number(isOutside && value == this->value() ? m_shown : value);
}

void Stepper::stepBy(int steps)
{
    // From a value outside of the range the first step leads to its border.
    if (m_shown < minimum() || m_shown > maximum()) {
        m_shown = value();
        lineEdit()->setText(textFromValue(value()));
        Q_EMIT stepped(value());
        return;
    }
    QSpinBox::stepBy(steps);
}

void Stepper::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QSpinBox::wheelEvent(event);
    else
        event->ignore();
}

}  // namespace tidemark
