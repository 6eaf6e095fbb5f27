#include "FormSection.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <utility>

namespace tidemark {

namespace {

constexpr int besideRow = 12;
constexpr int aboveRow = 8;

/// Paints the box, and a line above every row but the first.
class Box final : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        constexpr qreal radius = 8;
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(lineColour());
        painter.setBrush(boxColour());
        painter.drawRoundedRect(QRectF{rect()}.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        painter.setRenderHint(QPainter::Antialiasing, false);
        bool isFirst = true;
        for (int index = 0; index < layout()->count(); ++index) {
            const QWidget* row = layout()->itemAt(index)->widget();
            if (!row || row->isHidden())
                continue;
            const int top = row->y() - aboveRow;
            if (!std::exchange(isFirst, false))
                painter.drawLine(besideRow, top, width() - besideRow, top);
        }
    }

private:
    /// Where light is dark, fields of the base colour with their dark frames would be lost on the same colour.
    QColor boxColour() const
    {
        const QColor window = palette().color(QPalette::Window);
        const QColor text = palette().color(QPalette::WindowText);
        if (window.lightness() > text.lightness())
            return palette().color(QPalette::Base);
        constexpr float share = 0.08F;
        const auto mixed = [](float one, float other) { return one + (other - one) * share; };
        return QColor::fromRgbF(mixed(window.redF(), text.redF()),
            mixed(window.greenF(), text.greenF()), mixed(window.blueF(), text.blueF()));
    }

    QColor lineColour() const
    {
        QColor colour = palette().color(QPalette::WindowText);
        constexpr float faint = 0.18F;
        colour.setAlphaF(faint);
        return colour;
    }
};

}  // namespace

FormSection::FormSection(const QString& title, QWidget* parent)
    : QWidget(parent)
{
    auto* heading = new QLabel{title};
    QFont font = heading->font();
    font.setBold(true);
    heading->setFont(font);
    heading->setContentsMargins(besideRow, 0, besideRow, 0);

    auto* box = new Box;
    m_rows = new QVBoxLayout{box};
    m_rows->setContentsMargins(besideRow, aboveRow, besideRow, aboveRow);
    m_rows->setSpacing(2 * aboveRow);

    auto* layout = new QVBoxLayout{this};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(heading);
    layout->addWidget(box);
}

void FormSection::addRow(QWidget* row)
{
    m_rows->addWidget(row);
}

void FormSection::insertRow(int index, QWidget* row)
{
    m_rows->insertWidget(index, row);
}

void FormSection::takeRow(QWidget* row)
{
    m_rows->removeWidget(row);
}

}  // namespace tidemark
