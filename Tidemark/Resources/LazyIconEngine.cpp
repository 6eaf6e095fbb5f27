#include "LazyIconEngine.h"

#include <QPainter>

namespace tidemark {

LazyIconEngine::LazyIconEngine(std::function<QIcon()> find)
    : m_find(std::move(find))
{
}

const QIcon& LazyIconEngine::icon()
{
    if (!m_icon)
        m_icon = m_find();
    return *m_icon;
}

void LazyIconEngine::paint(
    QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    icon().paint(painter, rect, Qt::AlignCenter, mode, state);
}

QPixmap LazyIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    return icon().pixmap(size, 1, mode, state);
}

QSize LazyIconEngine::actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    return icon().actualSize(size, mode, state);
}

QList<QSize> LazyIconEngine::availableSizes(QIcon::Mode mode, QIcon::State state)
{
    return icon().availableSizes(mode, state);
}

QString LazyIconEngine::iconName()
{
    return icon().name();
}

QIconEngine* LazyIconEngine::clone() const
{
    return new LazyIconEngine{*this};
}

}  // namespace tidemark
