#include "Symbols.h"

#include "LazyIconEngine.h"
#include "SymbolIconEngine.h"

#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <QStandardPaths>
#include <QSvgRenderer>

namespace tidemark {

namespace {

QString symbolFolder()
{
    return QStringLiteral(":/tidemark/symbols");
}

QString suffix()
{
    return QStringLiteral(".svg");
}

/// Null for an unknown name.
SymbolIconEngine::Drawing drawing(const QString& name)
{
    const QString path = symbolFolder() + QLatin1Char{'/'} + name + suffix();
    if (name.contains(QLatin1Char{'/'}) || !QFile::exists(path))
        return nullptr;
    return std::make_shared<QSvgRenderer>(path);
}

QIcon icon(const QString& name, SymbolIconEngine::Ink ink, const QString& themeName = {})
{
    auto shape = drawing(name);
    if (!shape)
        return {};
    return QIcon{new SymbolIconEngine{std::move(shape), std::move(ink), themeName}};
}

/// Whether programs that show the tray icon find it by its name. QIcon would read the user's whole icon
/// theme for that, and with it the programs that start at login would wait.
bool isInstalled(const QString& themeName)
{
    const QString file = QStringLiteral("icons/hicolor/symbolic/apps/") + themeName + suffix();
    return !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty();
}

QColor mixed(const QColor& much, const QColor& little, qreal share)
{
    const auto mix = [share](float first, float second) {
        return float(share * first + (1 - share) * second);
    };
    return QColor::fromRgbF(mix(much.redF(), little.redF()), mix(much.greenF(), little.greenF()),
        mix(much.blueF(), little.blueF()));
}

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Active, QPalette::Window).lightnessF()
        < palette.color(QPalette::Active, QPalette::WindowText).lightnessF();
}

/// The colour that a symbol has by its meaning; invalid for those that have none.
QColor meaningfulColour(const QString& name, const QPalette& palette)
{
    if (name == QLatin1String{"checkmark.circle.fill"})
        return isDark(palette) ? QColor{0x4c, 0xc3, 0x6b} : QColor{0x1f, 0x8a, 0x3d};
    if (name == QLatin1String{"exclamationmark.triangle.fill"})
        return isDark(palette) ? QColor{0xff, 0xa3, 0x3a} : QColor{0xc8, 0x5f, 0x00};
    return {};
}

QColor normalColour(const QString& name, SymbolTone tone, const QPalette& palette)
{
    if (const QColor colour = meaningfulColour(name, palette); colour.isValid())
        return colour;
    return tone == SymbolTone::secondary ? secondaryColour(palette)
                                         : palette.color(QPalette::Active, QPalette::WindowText);
}

QColor paler(QColor colour)
{
    colour.setAlphaF(colour.alphaF() / 2);
    return colour;
}

}  // namespace

QStringList symbolNames()
{
    QStringList names = QDir{symbolFolder()}.entryList(QDir::Files, QDir::Name);
    for (QString& name : names)
        name.chop(suffix().size());
    return names;
}

QIcon symbolIcon(const QString& name, SymbolTone tone)
{
    return icon(name, [name, tone](QIcon::Mode mode) {
        const QPalette palette = QGuiApplication::palette();
        if (mode == QIcon::Disabled)
            return palette.color(QPalette::Disabled, QPalette::WindowText);
        if (mode == QIcon::Selected)
            return palette.color(QPalette::Active, QPalette::HighlightedText);
        return normalColour(name, tone, palette);
    });
}

QIcon symbolIcon(const QString& name, const QColor& colour)
{
    return icon(name, [colour](QIcon::Mode mode) {
        if (mode == QIcon::Disabled)
            return paler(colour);
        if (mode == QIcon::Selected)
            return QGuiApplication::palette().color(QPalette::Active, QPalette::HighlightedText);
        return colour;
    });
}

QColor secondaryColour(const QPalette& palette)
{
    // Still more than 4.5 to 1 against the window in the palettes that people use.
    constexpr qreal share = 0.68;
    return mixed(palette.color(QPalette::Active, QPalette::WindowText),
        palette.color(QPalette::Active, QPalette::Window), share);
}

QIcon trayIcon(bool isPaused)
{
    constexpr QColor middleGrey{0x80, 0x80, 0x80};
    const QString themeName = trayIconName(isPaused);
    return icon(
        isPaused ? QStringLiteral("pause.circle") : QStringLiteral("sparkles"),
        [middleGrey](QIcon::Mode /*mode*/) { return middleGrey; },
        // A name that the panel does not find would leave some panels without any icon.
        isInstalled(themeName) ? themeName : QString{});
}

QString trayIconName(bool isPaused)
{
    return isPaused ? QStringLiteral("io.tidemark.Tidemark-paused-symbolic")
                    : QStringLiteral("io.tidemark.Tidemark-tray-symbolic");
}

QIcon applicationIcon()
{
    return QIcon{new LazyIconEngine{[] {
        return QIcon::fromTheme(QStringLiteral("io.tidemark.Tidemark"),
            QIcon{QStringLiteral(":/tidemark/icons/io.tidemark.Tidemark.svg")});
    }}};
}

}  // namespace tidemark
