#include "Text.h"

#include <gtest/gtest.h>

namespace tidemark {

struct TextRow {
    const char* name;
    std::string text;
    std::string expected;
};

void PrintTo(const TextRow& row, std::ostream* stream)
{
    *stream << row.name;
}

static std::string nameOf(const testing::TestParamInfo<TextRow>& info)
{
    return info.param.name;
}

class Lowercasing : public testing::TestWithParam<TextRow> { };

TEST_P(Lowercasing, FollowsUnicode)
{
    EXPECT_EQ(lowercased(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Text, Lowercasing,
    testing::Values(TextRow{"Empty", "", ""}, TextRow{"ASCII", "AZaz[`@{09", "azaz[`@{09"},
        TextRow{"Umlaut", "ÄRGER", "ärger"}, TextRow{"Greek", "ΑΩ", "αω"},
        TextRow{"IAlwaysHasADot", "TITEL I", "titel i"},
        TextRow{"OutsideTheBasicPlane", "\U00010400", "\U00010428"}),
    nameOf);

class Extension : public testing::TestWithParam<TextRow> { };

TEST_P(Extension, IsWhatFollowsTheLastDot)
{
    EXPECT_EQ(pathExtension(GetParam().text), GetParam().expected);
}

TEST_P(Extension, AndTheRestMakeTheName)
{
    const std::string& name = GetParam().text;
    const std::string extension{pathExtension(name)};
    EXPECT_EQ(
        std::string{withoutPathExtension(name)} + (extension.empty() ? "" : '.' + extension), name);
}

INSTANTIATE_TEST_SUITE_P(Text, Extension,
    testing::Values(TextRow{"Plain", "a.pdf", "pdf"}, TextRow{"LastOnly", "a.tar.gz", "gz"},
        TextRow{"None", "README", ""}, TextRow{"NothingAfterTheDot", "a.", ""},
        TextRow{"HiddenFile", ".bashrc", ""}, TextRow{"HiddenWithExtension", ".a.txt", "txt"},
        TextRow{"TwoDotsAhead", "..txt", "txt"}, TextRow{"CaseKept", "A.PDF", "PDF"},
        TextRow{"Blank", "a. b", " b"}, TextRow{"Empty", "", ""}),
    nameOf);

class Whitespace : public testing::TestWithParam<TextRow> { };

TEST_P(Whitespace, IsTrimmedFromBothEnds)
{
    EXPECT_EQ(trimmedOfWhitespace(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Text, Whitespace,
    testing::Values(TextRow{"Empty", "", ""}, TextRow{"OnlyBlanks", " \t ", ""},
        TextRow{"InsideKept", "  a b\t", "a b"}, TextRow{"NoBreakSpace", "\u00A0a\u00A0", "a"},
        TextRow{"Ideographic", "\u3000a\u3000", "a"}, TextRow{"Ogham", "\u1680a\u205F", "a"},
        TextRow{"NewlinesStay", " \na\r\n ", "\na\r\n"},
        TextRow{"VerticalTabStays", "\va\f", "\va\f"},
        TextRow{"ZeroWidthSpaceStays", "\u200Ba\u200B", "\u200Ba\u200B"},
        TextRow{"HalfACharacterStays",
            "\xC2"
            "a",
            "\xC2"
            "a"}),
    nameOf);

class WhitespaceAndNewlines : public testing::TestWithParam<TextRow> { };

TEST_P(WhitespaceAndNewlines, AreTrimmedFromBothEnds)
{
    EXPECT_EQ(trimmedOfWhitespaceAndNewlines(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Text, WhitespaceAndNewlines,
    testing::Values(TextRow{"Mixed", " \n\t\r\na \n b\v\f\n ", "a \n b"},
        TextRow{"NextLine",
            "\xC2\x85"
            "a\xC2\x85",
            "a"},
        TextRow{"Separators", "\u2028a\u2029", "a"},
        TextRow{"OtherControlsStay",
            "\x1F"
            "a\x1C",
            "\x1F"
            "a\x1C"}),
    nameOf);

struct ValidityRow {
    const char* name;
    std::string bytes;
    bool isValid;
};

TEST(Text, UTF8IsCheckedStrictly)
{
    const ValidityRow rows[] = {{"empty", "", true}, {"ASCII", "abc", true},
        {"NUL", std::string(1, '\0'), true}, {"two bytes", "\xC3\xA4", true},
        {"four bytes", "\xF0\x9F\x8C\x8A", true}, {"last code point", "\xF4\x8F\xBF\xBF", true},
        {"noncharacter", "\xEF\xBF\xBF", true}, {"lone continuation", "\x80", false},
        {"cut short", "\xC3", false}, {"overlong slash", "\xC0\xAF", false},
        {"overlong three bytes", "\xE0\x80\xAF", false}, {"surrogate", "\xED\xA0\x80", false},
        {"past the last code point", "\xF4\x90\x80\x80", false}, {"Latin 1", "\xE4rger", false},
        {"never a byte", "\xFF", false}};
    for (const ValidityRow& row : rows)
        EXPECT_EQ(isValidUTF8(row.bytes), row.isValid) << row.name;
}

TEST(Text, FileNamesAreSingleComponents)
{
    for (const char* name : {"a", ".a", "...", "a b", "\n", "ä"})
        EXPECT_TRUE(isFileName(name)) << name;
    for (const std::string& name : {std::string{}, std::string{"."}, std::string{".."},
             std::string{"a/b"}, std::string{"/"}, std::string{"a\0b", 3}})
        EXPECT_FALSE(isFileName(name)) << name;
}

}  // namespace tidemark
