#include "GuiApplication.h"
#include "Symbols.h"

#include <QPainter>

#include <gmock/gmock.h>

#include <array>

namespace tidemark {

namespace {

constexpr std::array sizes{16, 22, 24, 32, 48, 64};
constexpr std::array ratios{1.0, 1.5, 2.0};

const QStringList names{"archivebox", "arrow.down.circle", "camera", "checkmark.circle.fill",
    "doc.richtext", "exclamationmark.triangle.fill", "folder", "menubar.dock.rectangle",
    "minus.circle.fill", "pause.circle", "plus", "shippingbox", "sparkles", "trash"};

bool isGreen(const QColor& colour)
{
    return colour.hue() > 100 && colour.hue() < 160 && colour.saturation() > 100;
}

bool isOrange(const QColor& colour)
{
    return colour.hue() > 20 && colour.hue() < 45 && colour.saturation() > 100;
}

}  // namespace

using Symbols = DrawingTest;

TEST_F(Symbols, AreTheOnesThatTheInterfaceNames)
{
    EXPECT_EQ(symbolNames(), names);
}

TEST_F(Symbols, AreDrawnAtEverySizeAndRatio)
{
    for (const QString& name : names) {
        const QIcon icon = symbolIcon(name);
        for (const int size : sizes)
            for (const double ratio : ratios) {
                SCOPED_TRACE(
                    testing::Message() << name.toStdString() << ' ' << size << '@' << ratio);
                const QImage image = shown(icon, size, ratio);
                const int expected = qRound(size * ratio);
                EXPECT_EQ(image.size(), QSize(expected, expected));
                EXPECT_GT(coverage(image), 0.1);
                EXPECT_LT(coverage(image), 0.8);
            }
    }
}

TEST_F(Symbols, MadeOfStraightLinesAreCrispAtWholeMultiplesOfTheGrid)
{
    // An outline between two pixels would be grey on both of them.
    for (const char* name : {"archivebox", "doc.richtext", "folder", "menubar.dock.rectangle",
             "plus", "shippingbox", "trash"})
        for (const int size : {16, 32, 48, 64}) {
            SCOPED_TRACE(testing::Message() << name << ' ' << size);
            const QImage image = shown(symbolIcon(name), size);
            int opaque = 0;
            int partly = 0;
            for (int y = 0; y < size; ++y)
                for (int x = 0; x < size; ++x) {
                    const int alpha = image.pixelColor(x, y).alpha();
                    opaque += alpha > 250 ? 1 : 0;
                    partly += alpha > 5 && alpha <= 250 ? 1 : 0;
                }
            EXPECT_GT(opaque, partly);
        }
}

TEST_F(Symbols, CanBeToldApart)
{
    for (const int size : {16, 64})
        for (qsizetype i = 0; i < names.size(); ++i)
            for (qsizetype j = 0; j < i; ++j)
                EXPECT_GT(difference(
                              shown(symbolIcon(names[i]), size), shown(symbolIcon(names[j]), size)),
                    0.05)
                    << names[i].toStdString() << " and " << names[j].toStdString() << " at "
                    << size;
}

TEST_F(Symbols, FollowAChangeOfThePaletteWithoutBeingMadeAnew)
{
    const QIcon icon = symbolIcon("folder");
    EXPECT_EQ(inkOf(shown(icon, 32)), QColor(Qt::black));

    setColours(Qt::white, QColor{0x20, 0x20, 0x20});
    EXPECT_EQ(inkOf(shown(icon, 32)), QColor(Qt::white));

    setColours(Qt::yellow, Qt::black);
    EXPECT_EQ(inkOf(shown(icon, 32)), QColor(Qt::yellow));
}

TEST_F(Symbols, AreInThePalettesColourForEveryMode)
{
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const QIcon icon = symbolIcon(name);
        EXPECT_EQ(inkOf(shown(icon, 32, 1, QIcon::Disabled)), QColor(0x70, 0x78, 0x80));
        EXPECT_EQ(inkOf(shown(icon, 32, 1, QIcon::Selected)), QColor(0xfe, 0xee, 0xdd));
        EXPECT_EQ(
            inkOf(shown(icon, 32, 1, QIcon::Active)), inkOf(shown(icon, 32, 1, QIcon::Normal)));
        EXPECT_NE(
            inkOf(shown(icon, 32, 1, QIcon::Disabled)), inkOf(shown(icon, 32, 1, QIcon::Normal)));
    }
}

TEST_F(Symbols, OfAMeaningHaveItsColourOnLightAndDark)
{
    const QIcon granted = symbolIcon("checkmark.circle.fill");
    const QIcon needed = symbolIcon("exclamationmark.triangle.fill");
    struct Scheme {
        QColor text;
        QColor window;
    };
    for (const Scheme& scheme :
        {Scheme{Qt::black, QColor{0xef, 0xef, 0xef}}, Scheme{Qt::black, Qt::white},
            Scheme{Qt::white, QColor{0x31, 0x36, 0x3b}}, Scheme{Qt::white, Qt::black}}) {
        SCOPED_TRACE(scheme.window.name().toStdString());
        setColours(scheme.text, scheme.window);
        EXPECT_TRUE(isGreen(inkOf(shown(granted, 32))));
        EXPECT_TRUE(isOrange(inkOf(shown(needed, 32))));
        EXPECT_GT(contrast(inkOf(shown(granted, 32)), scheme.window), 3);
        EXPECT_GT(contrast(inkOf(shown(needed, 32)), scheme.window), 3);
    }
}

TEST_F(Symbols, OfSecondaryToneAreQuieterButLegible)
{
    const QIcon icon = symbolIcon("trash", SymbolTone::secondary);
    for (const auto& [text, window] :
        {std::pair<QColor, QColor>{Qt::black, QColor{0xef, 0xef, 0xef}},
            {QColor{0xfc, 0xfc, 0xfc}, QColor{0x31, 0x36, 0x3b}}}) {
        setColours(text, window);
        EXPECT_GT(contrast(text, window), contrast(inkOf(shown(icon, 32)), window));
        EXPECT_GT(contrast(inkOf(shown(icon, 32)), window), 4.5);
    }
}

TEST_F(Symbols, TakeAColourThatIsGiven)
{
    const QColor blue{0x10, 0x20, 0xf0};
    const QIcon icon = symbolIcon("plus", blue);

    EXPECT_EQ(inkOf(shown(icon, 32)), blue);
    EXPECT_LT(coverage(shown(icon, 32, 1, QIcon::Disabled)), coverage(shown(icon, 32)) * 0.6);
    EXPECT_EQ(inkOf(shown(icon, 32, 1, QIcon::Selected)), QColor(0xfe, 0xee, 0xdd));
}

TEST_F(Symbols, OfUnknownNameAreNull)
{
    for (const char* name : {"", "nosuch", "../symbols/trash", "Trash", "trash.svg"}) {
        EXPECT_TRUE(symbolIcon(name).isNull()) << name;
        EXPECT_TRUE(symbolIcon(name, QColor{Qt::red}).isNull()) << name;
    }
    EXPECT_FALSE(symbolIcon("trash").isNull());
}

TEST_F(Symbols, ArePaintedAsFineAsTheDeviceAllows)
{
    QImage twice{32, 32, QImage::Format_ARGB32};
    twice.setDevicePixelRatio(2);
    twice.fill(Qt::transparent);
    {
        QPainter painter{&twice};
        symbolIcon("trash").paint(&painter, QRect{0, 0, 16, 16});
    }

    twice.setDevicePixelRatio(1);
    EXPECT_LT(difference(twice, shown(symbolIcon("trash"), 32)), 0.001);
}

TEST_F(Symbols, StayInTheMiddleOfWhatIsNotSquare)
{
    const QImage wide = symbolIcon("trash").pixmap(QSize{40, 16}).toImage();
    ASSERT_EQ(wide.size(), QSize(40, 16));
    EXPECT_LT(difference(wide.copy(12, 0, 16, 16).convertToFormat(QImage::Format_ARGB32),
                  shown(symbolIcon("trash"), 16)),
        0.001);
}

}  // namespace tidemark
