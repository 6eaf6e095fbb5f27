#include "LinkButton.h"

#include "PlainText.h"

#include <QDesktopServices>
#include <QStyleOption>
#include <QStylePainter>
#include <QUrl>

namespace tidemark {

LinkButton::LinkButton(const QString& text, QString url, QWidget* parent)
    : QPushButton(text, parent)
    , m_url(std::move(url))
{
    setAutoDefault(false);
    setCursor(Qt::PointingHandCursor);
    setToolTip(plainToolTip(m_url));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    QObject::connect(
        this, &QPushButton::clicked, this, [this] { QDesktopServices::openUrl(QUrl{m_url}); });
}

QSize LinkButton::sizeHint() const
{
    constexpr int room = 4;  // for the focus
    return fontMetrics().size(Qt::TextSingleLine, text()) + QSize{room, room};
}

void LinkButton::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter{this};
    QFont underlined = font();
    underlined.setUnderline(true);
    painter.setFont(underlined);
    painter.setPen(palette().color(QPalette::Link));
    painter.drawText(rect(), Qt::AlignLeading | Qt::AlignVCenter, text());
    if (!hasFocus())
        return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.backgroundColor = palette().color(QPalette::Base);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, option);
}

}  // namespace tidemark
