#pragma once

#include <QIconEngine>

#include <functional>
#include <optional>

namespace tidemark {

/// An icon that is looked for when it is first wanted: to look through an icon theme takes its time, and
/// a tray icon alone needs none of it. Main thread only.
class LazyIconEngine final : public QIconEngine {
public:
    explicit LazyIconEngine(std::function<QIcon()> find);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
    QString iconName() override;
    QIconEngine* clone() const override;

private:
    const QIcon& icon();

    std::function<QIcon()> m_find;
    std::optional<QIcon> m_icon;
};

}  // namespace tidemark
