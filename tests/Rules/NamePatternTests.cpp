#include "NamePattern.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace tidemark;

TEST(NamePattern, MatchesLikeAShellWithoutRegardToCase)
{
    struct Row {
        const char* pattern;
        const char* name;
        bool matches;
    };
    for (const Row& row : {
             Row{"Screenshot*", "screenshot.png", true},
             Row{"*", ".hidden", true},
             Row{"*.png", "a.PNG", true},
             Row{"a?c", "aBc", true},
             Row{"a?c", "ac", false},
             Row{"a?c", "aüc", true},
             Row{"???", "üa", false},
             Row{"[!a][!a]", "ü", false},
             Row{"a*ü??", "aüü", false},
             Row{"[a-c]x", "Bx", true},
             Row{"[!a-c]x", "bx", false},
             Row{"[äö]x", "Äx", true},
             Row{"\\*", "*", true},
             Row{"\\*", "x", false},
             Row{"STRASSE", "strasse", true},
             Row{"ÜBUNG*", "übung 1", true},
             Row{"", "", true},
             Row{"", "a", false},
             Row{"a", "a\n", false},
             Row{"[", "[", true},
             Row{"[a", "[a", true},
             Row{"a\\", "a", false},
             Row{"a\\", "a/", false},
         }) {
        EXPECT_EQ(NamePattern::matches(row.pattern, row.name), row.matches)
            << row.pattern << " and " << row.name;
    }
}

TEST(NamePattern, MatchesAlikeInTheCLocale)
{
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);

    EXPECT_TRUE(NamePattern::matches("ÜBUNG?", "übungé"));
}

TEST(NamePattern, LeavesTheLocaleOfTheThreadAlone)
{
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    NamePattern::matches("*", "a");

    EXPECT_EQ(std::setlocale(LC_CTYPE, nullptr), before);
}

TEST(NamePattern, NeverMatchesWithANULInThePattern)
{
    EXPECT_FALSE(NamePattern::matches(std::string("a\0b", 3), "a"));
}

TEST(NamePattern, EndsOnPatternsWithManyStars)
{
    std::string pattern;
    for (int star = 0; star < 60; ++star)
        pattern += "*a";

    EXPECT_FALSE(NamePattern::matches(pattern + "b", std::string(250, 'a')));
}
