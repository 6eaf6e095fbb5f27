#include "GuiApplication.h"

#include "TemporaryFolder.h"

#include <QGuiApplication>
#include <QIcon>

#include <array>
#include <cmath>

namespace tidemark {

namespace {

QGuiApplication& application()
{
    // Not left to whoever starts the tests: they must never open a window on a person's desktop.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const TemporaryFolder runtime;
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime.path()));
    static int count = 1;
    static std::array<char, 6> name{"tests"};
    static std::array<char*, 2> arguments{name.data(), nullptr};
    static QGuiApplication theApplication{count, arguments.data()};
    return theApplication;
}

double luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(double(colour.redF())) + 0.7152 * linear(double(colour.greenF()))
        + 0.0722 * linear(double(colour.blueF()));
}

}  // namespace

DrawingTest::DrawingTest()
{
    application();
    QIcon::setThemeName(QStringLiteral("hicolor"));
    QIcon::setThemeSearchPaths({});
    setColours(Qt::black, Qt::white);
}

DrawingTest::~DrawingTest()
{
    QGuiApplication::setPalette({});
}

void DrawingTest::setColours(const QColor& text, const QColor& window)
{
    QPalette palette;
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::All, role, text);
        palette.setColor(QPalette::Disabled, role, QColor{0x70, 0x78, 0x80});
    }
    palette.setColor(QPalette::All, QPalette::Window, window);
    palette.setColor(QPalette::All, QPalette::HighlightedText, QColor{0xfe, 0xee, 0xdd});
    QGuiApplication::setPalette(palette);
}

QImage shown(const QIcon& icon, int size, qreal ratio, int mode)
{
    return icon.pixmap(QSize{size, size}, ratio, QIcon::Mode(mode))
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

QColor inkOf(const QImage& image)
{
    QColor ink{Qt::transparent};
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (const QColor colour = image.pixelColor(x, y); colour.alpha() > ink.alpha())
                ink = colour;
    ink.setAlpha(255);
    return ink;
}

double coverage(const QImage& image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += image.pixelColor(x, y).alpha();
    return sum / 255 / image.width() / image.height();
}

double difference(const QImage& first, const QImage& second)
{
    double sum = 0;
    for (int y = 0; y < first.height(); ++y)
        for (int x = 0; x < first.width(); ++x)
            sum += std::abs(first.pixelColor(x, y).alpha() - second.pixelColor(x, y).alpha());
    return sum / 255 / first.width() / first.height();
}

double contrast(const QColor& first, const QColor& second)
{
    const double one = luminance(first) + 0.05;
    const double other = luminance(second) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

}  // namespace tidemark
