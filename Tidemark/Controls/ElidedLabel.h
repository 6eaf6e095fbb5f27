#pragma once

#include <QLabel>

namespace tidemark {

/// One line of plain text that takes what room there is; where that is too little it is cut, and the tooltip
/// has all of it.
class ElidedLabel : public QLabel {
public:
    explicit ElidedLabel(Qt::TextElideMode mode, QWidget* parent = nullptr);

    void setText(const QString& text);

    /// Whether there is too little room.
    bool isElided() const;

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString shownText() const;
    void updateToolTip();

    Qt::TextElideMode m_mode;
};

}  // namespace tidemark
