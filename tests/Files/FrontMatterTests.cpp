#include "FrontMatter.h"

#include "InMemoryFileManager.h"
#include "ScopedEnvironment.h"

#include <gtest/gtest.h>

using namespace tidemark;

namespace {

using Text = std::optional<std::string>;

MarkdownFrontMatter dated(std::string date)
{
    return {.title = std::nullopt, .date = std::move(date)};
}

std::optional<MarkdownFrontMatter> readFile(std::string content, std::size_t maxBytes = 8192)
{
    InMemoryFileManager disk{{"/n.md", std::move(content)}};
    return FrontMatter::read(disk, FileURL("/n.md"), maxBytes);
}

}  // namespace

TEST(FrontMatter, ReadsTitleAndDate)
{
    struct Row {
        const char* name;
        std::string text;
        Text title;
        Text date;
    };
    for (const Row& row : {
             Row{"single quotes", "---\ntitle: 'Plan'\ndate: 2024-05-03\n---\nBody", "Plan",
                 "2024-05-03"},
             Row{"double quotes", "---\ntitle: \"Plan\"\ndate: 2024-05-03\n---\nBody", "Plan",
                 "2024-05-03"},
             Row{"no quotes", "---\ntitle: Plan\n---", "Plan", {}},
             Row{"blank behind the first hyphens", "--- \ntitle: x\n---", "x", {}},
             Row{"tab before the first hyphens", "\t---\ntitle: x\n---", "x", {}},
             Row{"space separators around the hyphens", "\u00A0---\u3000\ntitle: x\n---", "x", {}},
             Row{"four hyphens open nothing", "----\ntitle: x\n---", {}, {}},
             Row{"two hyphens open nothing", "--\ntitle: x\n---", {}, {}},
             Row{"text before the block", "Hello\n---\ntitle: x\n---", {}, {}},
             Row{"an empty line before the block", "\n---\ntitle: x\n---", {}, {}},
             Row{"empty text", "", {}, {}},
             Row{"only the opening line", "---", {}, {}},
             Row{"a block without lines", "---\n---\ntitle: x", {}, {}},
             Row{"key in any case", "---\nTitle: x\nDATE: y\n---", "x", "y"},
             Row{"blanks around key and value", "---\n \ttitle \t:  x \n---", "x", {}},
             Row{"no value", "---\ntitle:\n---", {}, {}},
             Row{"no value after a value keeps it", "---\ntitle: x\ntitle:\n---", "x", {}},
             Row{"empty quotes are no value", "---\ntitle: ''\n---", {}, {}},
             Row{"blanks in quotes are a value", "---\ntitle: \"  \"\n---", "  ", {}},
             Row{"one double quote", "---\ntitle: \"\n---", "\"", {}},
             Row{"mismatched quotes", "---\ntitle: 'x\"\n---", "'x\"", {}},
             Row{"only the outer quotes go", "---\ntitle: ''x''\n---", "'x'", {}},
             Row{"no escapes in quotes", "---\ntitle: \"a\\\"b\"\n---", "a\\\"b", {}},
             Row{"a colon in the value", "---\ntitle: Plan: Q3\n---", "Plan: Q3", {}},
             Row{"lines without colon", "---\ntitle\n- item\ntitle: x\n---", "x", {}},
             Row{"other keys", "---\nauthor: a\ntags: b\n---", {}, {}},
             Row{"created counts as date", "---\ncreated: 2024-01-02\n---", {}, "2024-01-02"},
             Row{"created after date wins", "---\ndate: 1\ncreated: 2\n---", {}, "2"},
             Row{"date after created wins", "---\ncreated: 2\ndate: 1\n---", {}, "1"},
             Row{"the later title wins", "---\ntitle: a\ntitle: b\n---", "b", {}},
             Row{"nothing counts behind the block", "---\ntitle: a\n---\ntitle: b", "a", {}},
             Row{"a block without end", "---\ntitle: a\ndate: b", "a", "b"},
             Row{"CR LF", "---\r\ntitle: a\r\n---\r\n", "a", {}},
             Row{"CR alone", "---\rtitle: a\r---\rtitle: b", "a", {}},
             Row{"vertical tab and form feed end lines", "---\vtitle: a\fdate: b\n---", "a", "b"},
             Row{"next line character", "---\u0085title: a\u0085---", "a", {}},
             Row{"line and paragraph separator", "---\u2028title: a\u2029date: b", "a", "b"},
             Row{"non-ASCII", "---\ntitle: Grüße 🌊\n---", "Grüße 🌊", {}},
         }) {
        const MarkdownFrontMatter expected{.title = row.title, .date = row.date};
        EXPECT_EQ(FrontMatter::parse(row.text), expected) << row.name;
        EXPECT_EQ(expected.isEmpty(), !row.title && !row.date);
    }
}

TEST(FrontMatter, IsAbsentWithoutTitleAndDate)
{
    EXPECT_EQ(readFile("no block"), std::nullopt);
    EXPECT_EQ(readFile("---\nauthor: a\n---"), std::nullopt);
    EXPECT_EQ(readFile(""), std::nullopt);
}

TEST(FrontMatter, IsAbsentWhenTheFileCannotBeRead)
{
    InMemoryFileManager disk{{"/n.md", "---\ntitle: a\n---"}};
    disk.makeUnreadable("/n.md");

    EXPECT_EQ(FrontMatter::read(disk, FileURL("/n.md"), 8192), std::nullopt);
    EXPECT_EQ(FrontMatter::read(disk, FileURL("/absent.md"), 8192), std::nullopt);
}

TEST(FrontMatter, IsAbsentWhenTheLimitCutsACharacterInTwo)
{
    const std::string head = "---\ntitle: a\n---\n";
    const std::string text = head + std::string(8191 - head.size(), 'x') + "ü and more";

    EXPECT_EQ(readFile(text), std::nullopt);
    EXPECT_TRUE(readFile(text, 8193));
    EXPECT_TRUE(readFile(text, 8191));
}

TEST(FrontMatter, IsAbsentInTextThatIsNotUTF8)
{
    EXPECT_EQ(readFile("---\ntitle: Gr\xfc\xdf\n---"), std::nullopt);
}

TEST(FrontMatter, IsReadBehindAByteOrderMark)
{
    ASSERT_TRUE(readFile("\xEF\xBB\xBF---\ntitle: a\n---"));
    EXPECT_EQ(readFile("\xEF\xBB\xBF---\ntitle: a\n---")->title, "a");
}

TEST(FrontMatter, OnlyTheFirstBytesCount)
{
    const std::string text = "---\ntitle: a\ndate: b\n---";

    EXPECT_EQ(readFile(text, 13), (MarkdownFrontMatter{.title = "a", .date = std::nullopt}));
}

TEST(MarkdownFrontMatter, HasTheMonthWithWhichItsDateBegins)
{
    struct Row {
        const char* date;
        Text month;
    };
    for (const Row& row : {
             Row{"2024-05-03", "2024-05"},
             Row{"2024-05", "2024-05"},
             Row{"2024-05-03T10:00:00Z", "2024-05"},
             Row{"2024-13", "2024-13"},
             Row{"2024-00-01", "2024-00"},
             Row{"2024-7-01", {}},
             Row{"2024-0", {}},
             Row{"202-405", {}},
             Row{"24-05-03", {}},
             Row{"2024/05/03", {}},
             Row{"20240503", {}},
             Row{"-2024-05", {}},
             Row{"2024--05", {}},
             Row{"2024-a5", {}},
             Row{"May 2024", {}},
             Row{"٢٠٢٤-٠٥-٠٣", "٢٠٢٤-٠٥"},
         }) {
        EXPECT_EQ(dated(row.date).month(), row.month) << row.date;
    }
    EXPECT_EQ(MarkdownFrontMatter{}.month(), std::nullopt);
}

TEST(MarkdownFrontMatter, HasTheLocalMidnightOfItsDayAsCreationDate)
{
    struct Row {
        const char* zone;
        const char* date;
        std::optional<double> seconds;  // since 1970
    };
    for (const Row& row : {
             Row{"UTC", "2024-05-03", 1714694400},
             Row{"Europe/Berlin", "2024-05-03", 1714687200},
             Row{"America/New_York", "2024-05-03T10:00:00Z", 1714708800},
             Row{"UTC", "1969-12-31", -86400},
             Row{"UTC", "2024-02-29 and more", 1709164800},
             Row{"America/Sao_Paulo", "2018-11-04", 1541300400},  // midnight did not happen there
             Row{"UTC", "2023-02-29", {}},
             Row{"UTC", "2024-13-01", {}},
             Row{"UTC", "2024-7-01", {}},
             Row{"UTC", "2024-05", {}},
             Row{"UTC", "May 2024", {}},
             Row{"UTC", "2024/05/03", {}},
             Row{"UTC", "-024-05-03", {}},
         }) {
        const ScopedEnvironment zone("TZ", row.zone);
        const auto expected =
            row.seconds ? std::optional(Date(Seconds(*row.seconds))) : std::nullopt;
        EXPECT_EQ(dated(row.date).createdDate(), expected) << row.zone << ' ' << row.date;
    }
    EXPECT_EQ(MarkdownFrontMatter{}.createdDate(), std::nullopt);
}
