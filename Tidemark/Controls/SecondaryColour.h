#pragma once

#include <QWidget>

namespace tidemark {

/// Gives `widget` the colour of accompanying text, and a new one whenever the palette changes.
void useSecondaryColour(QWidget& widget);

}  // namespace tidemark
