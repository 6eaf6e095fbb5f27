#include "ElidedLabel.h"

#include "PlainText.h"

#include <QPainter>
#include <QStyle>

namespace tidemark {

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget* parent)
    : QLabel(parent)
    , m_mode(mode)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text)
{
    QLabel::setText(text);
    updateToolTip();
}

bool ElidedLabel::isElided() const
{
    return shownText() != text();
}

QSize ElidedLabel::minimumSizeHint() const
{
    QSize size = QLabel::minimumSizeHint();
    size.setWidth(fontMetrics().averageCharWidth() * 3);
    return size;
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    const Qt::Alignment place = QStyle::visualAlignment(layoutDirection(), alignment());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(place), palette(), isEnabled(),
        shownText(), foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    updateToolTip();
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), m_mode, contentsRect().width());
}

void ElidedLabel::updateToolTip()
{
    setToolTip(isElided() ? plainToolTip(text()) : QString{});
}

}  // namespace tidemark
