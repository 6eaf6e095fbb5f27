#pragma once

#include "Symbols.h"

#include <QLabel>

namespace tidemark {

/// A symbol that follows palette and scale. Without a tooltip it is decoration and says nothing to a screen
/// reader; with one it says that.
class SymbolLabel : public QLabel {
public:
    /// `width` is in device-independent pixels.
    SymbolLabel(int width, SymbolTone tone, QWidget* parent = nullptr);

    void setSymbol(const QString& name);
    const QString& symbol() const { return m_name; }

    void setMeaning(const QString& text);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_width;
    SymbolTone m_tone;
    QString m_name;
};

}  // namespace tidemark
