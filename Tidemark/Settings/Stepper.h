#pragma once

#include <QSpinBox>

namespace tidemark {

/// A number that goes up and down by steps and cannot be typed. It may show one outside of its range, which
/// another program has set; stepping leads back into the range.
class Stepper : public QSpinBox {
    Q_OBJECT

public:
    Stepper(int least, int most, int step, QWidget* parent = nullptr);

    /// Shows a value; `stepped` is not sent.
    void show(int value);

Q_SIGNALS:
    /// The user changed the value.
    void stepped(int value);

protected:
    QString textFromValue(int value) const override;
    void stepBy(int steps) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    int m_shown = 0;
};

}  // namespace tidemark
