#pragma once

#include <QImage>
#include <QPalette>

#include <gtest/gtest.h>

class QIcon;

namespace tidemark {

/// A test that draws: the one application of the test program, without a screen, with a palette and an
/// icon theme that are the same at the begin of every test.
class DrawingTest : public testing::Test {
public:
    DrawingTest();
    ~DrawingTest() override;
    DrawingTest(const DrawingTest&) = delete;
    DrawingTest& operator=(const DrawingTest&) = delete;

protected:
    /// Has the text of the application be of `text` on `window`.
    static void setColours(const QColor& text, const QColor& window);
};

/// What `icon` shows at `size` logical pixels.
QImage shown(const QIcon& icon, int size, qreal ratio = 1, int mode = 0);

/// The colour of the most opaque pixel, without its opacity.
QColor inkOf(const QImage& image);

/// How much of the image is covered, from 0 to 1.
double coverage(const QImage& image);

/// How much two images of one size differ in what they cover, from 0 to 1.
double difference(const QImage& first, const QImage& second);

/// The contrast of two colours, from 1 to 21, as the Web Content Accessibility Guidelines measure it.
double contrast(const QColor& first, const QColor& second);

}  // namespace tidemark
