#include "NameOrder.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace tidemark;

static std::string sortKey(const NameOrder& order, std::string_view name)
{
    std::string key;
    order.appendSortKey(name, key);
    return key;
}

static bool isBefore(const char* a, const char* b)
{
    const NameOrder order;
    return sortKey(order, a) < sortKey(order, b);
}

TEST(NameOrder, ComparesAsAFileBrowserDoes)
{
    struct Row {
        const char* name;
        const char* first;
        const char* second;
    };
    for (const Row& row : {
             Row{"digits by value", "Report 9.pdf", "Report 10.pdf"},
             Row{"long runs of digits by value", "a99999999999999999998", "a99999999999999999999"},
             Row{"letters without regard to case", "apple.txt", "Banana.txt"},
             Row{"the small letter first where only case differs", "a.txt", "A.txt"},
             Row{"case only where nothing else differs", "A1.txt", "a2.txt"},
             Row{"accents next to their letter", "étude.txt", "zebra.txt"},
             Row{"a shorter name before its continuation", "a", "ab"},
             Row{"digits before letters", "1.txt", "a.txt"},
         }) {
        EXPECT_TRUE(isBefore(row.first, row.second)) << row.name;
        EXPECT_FALSE(isBefore(row.second, row.first)) << row.name;
    }
}

TEST(NameOrder, CannotTellApartTheTwoFormsOfAnAccentedLetter)
{
    const NameOrder order;

    EXPECT_EQ(sortKey(order, "\u00e9"), sortKey(order, "e\u0301"));
    EXPECT_EQ(sortKey(order, "file 07"), sortKey(order, "file 7"));
}

TEST(NameOrder, IsTheSameInEveryLocale)
{
    const NameOrder before;
    const std::string key = sortKey(before, "Ärger 10");
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);

    EXPECT_EQ(sortKey(NameOrder(), "Ärger 10"), key);
    EXPECT_TRUE(isBefore("Report 9", "Report 10"));
}

TEST(NameOrder, OrdersNamesOfAnyLength)
{
    const std::string long1(5000, 'a');

    EXPECT_TRUE(isBefore(long1.c_str(), (long1 + "b").c_str()));
    EXPECT_TRUE(isBefore("", "a"));
}
