#pragma once

#include <QColor>
#include <QIcon>
#include <QStringList>

class QPalette;

/// The symbols of the interface, drawn for this project, and the icons made of them.
///
/// The drawings lie in symbols/, on a grid of 16 by 16, with outlines of 1 and marks of 2 on whole pixels
/// (rings a little stronger): crisp at 16, 32, 48 and 64, smooth between. They are shapes without colour.
/// Needs a QGuiApplication; main thread only.
namespace tidemark {

/// How loud a symbol speaks.
enum class SymbolTone {
    primary,  ///< As text does.
    secondary,  ///< As accompanying text does.
};

/// Every name that symbolIcon() knows, such as "pause.circle", in alphabetical order.
QStringList symbolNames();

/// The symbol in the colour that the application's palette has for text when it is drawn: also disabled,
/// selected, and after the palette has changed. "checkmark.circle.fill" is green and
/// "exclamationmark.triangle.fill" orange instead, in a shade that stands out from the palette's window
/// colour. An unknown name yields a null icon.
///
/// A widget that keeps a pixmap of it, such as a QLabel, has to fetch a new one when its palette changes.
QIcon symbolIcon(const QString& name, SymbolTone tone = SymbolTone::primary);

/// The same in `colour`; paler when disabled, and in the palette's highlighted text colour when selected.
QIcon symbolIcon(const QString& name, const QColor& colour);

/// The colour of accompanying text and of symbols of SymbolTone::secondary on the window colour.
QColor secondaryColour(const QPalette& palette);

/// "pause.circle" while paused, else "sparkles", for a panel whose colour nobody tells.
///
/// Where the icon theme has it, the icon carries its name there (trayIconName()), by which panels that
/// recolour symbolic icons find it. Its pixmaps, and the theme's file for a panel that does not recolour,
/// are of a middle grey that stands out from light and dark alike (at least 3 to 1 from black and from
/// white).
QIcon trayIcon(bool isPaused);

/// The name of the tray's icon in the icon theme.
QString trayIconName(bool isPaused);

/// The application's own icon, from the icon theme or, where it is not installed, from the program.
QIcon applicationIcon();

}  // namespace tidemark
