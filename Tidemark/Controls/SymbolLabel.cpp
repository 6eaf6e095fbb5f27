#include "SymbolLabel.h"

#include <QPainter>

namespace tidemark {

SymbolLabel::SymbolLabel(int width, SymbolTone tone, QWidget* parent)
    : QLabel(parent)
    , m_width(width)
    , m_tone(tone)
{
    setFixedSize(SymbolLabel::sizeHint());
}

void SymbolLabel::setSymbol(const QString& name)
{
    if (m_name == name)
        return;
    m_name = name;
    update();
}

void SymbolLabel::setMeaning(const QString& text)
{
    setToolTip(text);
    setAccessibleName(text);
}

QSize SymbolLabel::sizeHint() const
{
    return {m_width, m_width};
}

void SymbolLabel::paintEvent(QPaintEvent* /*event*/)
{
    // The drawings are made for multiples of 16; between two of these they would be blurred.
    constexpr int grid = 16;
    QRect place{0, 0, grid, grid};
    place.moveCenter(rect().center());
    QPainter painter{this};
    symbolIcon(m_name, m_tone).paint(&painter, place);
}

}  // namespace tidemark
