#include "DisplayText.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace tidemark {
namespace {

struct Row {
    const char* name;
    std::string text;
    std::string shown;
    std::size_t width;

    friend void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }
};

class DisplayText : public testing::TestWithParam<Row> { };

TEST_P(DisplayText, IsHarmlessAndKnowsItsWidth)
{
    const std::string shown = displayText(GetParam().text);

    EXPECT_EQ(shown, GetParam().shown);
    EXPECT_EQ(displayWidth(shown), GetParam().width);
}

INSTANTIATE_TEST_SUITE_P(Names, DisplayText,
    testing::Values(Row{"empty", "", "", 0}, Row{"plain", "report.pdf", "report.pdf", 10},
        Row{"accents", "caf\u00E9", "caf\u00E9", 4},
        Row{"combining", "cafe\u0301", "cafe\u0301", 4},
        Row{"wide", "\u65E5\u672C.txt", "\u65E5\u672C.txt", 8},
        Row{"emoji", "\U0001F600", "\U0001F600", 2}, Row{"newline", "a\nb", R"(a\nb)", 4},
        Row{"tab", "a\tb", R"(a\tb)", 4}, Row{"escape", "\x1b[2J", R"(\x1b[2J)", 7},
        Row{"bell", "\a", R"(\x07)", 4}, Row{"nul", std::string(1, '\0'), R"(\x00)", 4},
        Row{"delete", "\x7f", R"(\x7f)", 4}, Row{"secondControls", "\u009B", R"(\u{9b})", 6},
        Row{"override", "a\u202Egpj.exe", R"(a\u{202e}gpj.exe)", 16},
        Row{"isolate", "\u2066", R"(\u{2066})", 8},
        Row{"zeroWidthSpace", "a\u200Bb", R"(a\u{200b}b)", 10},
        Row{"lineSeparator", "\u2028", R"(\u{2028})", 8},
        Row{"tagCharacter", "\U000E0041", R"(\u{e0041})", 9},
        Row{"brokenUTF8", "a\xFF\xC3", R"(a\xff\xc3)", 9},
        Row{"overlongSlash", "\xC0\xAF", R"(\xc0\xaf)", 8},
        Row{"surrogate", "\xED\xA0\x80", R"(\xed\xa0\x80)", 12},
        Row{"beyondUnicode", "\xF4\x90\x80\x80", R"(\xf4\x90\x80\x80)", 16}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(ClippedText, FitsAndShowsThatSomethingIsMissing)
{
    EXPECT_EQ(clippedToWidth("report.pdf", 10), "report.pdf");
    EXPECT_EQ(clippedToWidth("report.pdf", 9), "report...");
    EXPECT_EQ(clippedToWidth("\u65E5\u672C\u8A9E", 6), "\u65E5\u672C\u8A9E");
    EXPECT_EQ(clippedToWidth("\u65E5\u672C\u8A9E", 5), "\u65E5...");
    EXPECT_EQ(clippedToWidth("\u65E5\u672C\u8A9E", 4), "...");
    EXPECT_EQ(clippedToWidth("abcdef", 2), "..");
    EXPECT_EQ(clippedToWidth("abcdef", 0), "");
}

}  // namespace
}  // namespace tidemark
