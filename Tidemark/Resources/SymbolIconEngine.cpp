#include "SymbolIconEngine.h"

#include <QPaintDevice>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace tidemark {

SymbolIconEngine::SymbolIconEngine(Drawing drawing, Ink ink, QString themeName)
    : m_drawing(std::move(drawing))
    , m_ink(std::move(ink))
    , m_themeName(std::move(themeName))
{
}

void SymbolIconEngine::paint(
    QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    const qreal ratio = painter->device() == nullptr ? 1 : painter->device()->devicePixelRatio();
    painter->drawPixmap(rect, pixmap(rect.size() * ratio, mode, state));
}

QPixmap SymbolIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/)
{
    if (size.isEmpty())
        return {};
    QPixmap pixmap{size};
    pixmap.fill(Qt::transparent);
    const int side = std::min(size.width(), size.height());
    QPainter painter{&pixmap};
    m_drawing->render(
        &painter, QRect{(size.width() - side) / 2, (size.height() - side) / 2, side, side});
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), m_ink(mode));
    return pixmap;
}

QIconEngine* SymbolIconEngine::clone() const
{
    return new SymbolIconEngine{*this};
}

QString SymbolIconEngine::key() const
{
    return QStringLiteral("tidemark-symbol");
}

QString SymbolIconEngine::iconName()
{
    return m_themeName;
}

QList<QSize> SymbolIconEngine::availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/)
{
    return {{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}};
}

}  // namespace tidemark
