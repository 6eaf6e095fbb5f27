#pragma once

#include <QIconEngine>

#include <functional>
#include <memory>

class QSvgRenderer;

namespace tidemark {

/// Draws one symbol in whatever colour is right at the moment of drawing.
///
/// The drawing gives the shape only (its opacity); the colour is asked for each time, so that an icon
/// which was made long ago is right after a change of the palette as soon as it is drawn again. Main
/// thread only.
class SymbolIconEngine : public QIconEngine {
public:
    using Drawing = std::shared_ptr<QSvgRenderer>;
    using Ink = std::function<QColor(QIcon::Mode)>;

    /// `themeName` is what another program may look the icon up by in the icon theme; empty if by nothing.
    SymbolIconEngine(Drawing drawing, Ink ink, QString themeName = {});

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;

    /// `size` is in device pixels. What is not square has the symbol in its middle.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;

    QIconEngine* clone() const override;
    QString key() const override;
    QString iconName() override;

    /// The usual sizes of panels; others are drawn as well.
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;

private:
    Drawing m_drawing;
    Ink m_ink;
    QString m_themeName;
};

}  // namespace tidemark
