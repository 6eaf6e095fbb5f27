#include "PlainText.h"

#include <gtest/gtest.h>

namespace tidemark {

TEST(PlainText, ATooltipShowsMarkupAsItIs)
{
    EXPECT_EQ(plainToolTip("plain & simple"), "plain & simple");
    EXPECT_TRUE(plainToolTip("<b>x</b>").contains("&lt;b&gt;x&lt;/b&gt;"));
}

TEST(PlainText, NoCharacterIsCutInHalf)
{
    const QString faces = QString::fromUtf8("😀").repeated(50);
    for (qsizetype length = 4; length < 20; ++length) {
        const QString cut = shortened(faces, length);
        EXPECT_LE(cut.size(), length);
        EXPECT_TRUE(cut.isValidUtf16());
    }
    EXPECT_EQ(shortened("short", 5), "short");
}

}  // namespace tidemark
