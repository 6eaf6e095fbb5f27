#include "Rare.h"

#include <gtest/gtest.h>

#include <string>

using namespace tidemark;

TEST(Rare, IsAbsentWhereNothingWasPutIn)
{
    for (const Rare<std::string>& rare : {Rare<std::string>(), Rare<std::string>(std::nullopt),
             Rare<std::string>(std::optional<std::string>())}) {
        EXPECT_FALSE(rare);
        EXPECT_FALSE(rare.has_value());
        EXPECT_TRUE(rare == Rare<std::string>());
    }
}

TEST(Rare, IsCopiedAndComparedByItsValue)
{
    const Rare<std::string> text(std::string("text"));
    Rare<std::string> copy = text;
    EXPECT_TRUE(copy == text);
    EXPECT_EQ(*copy, "text");

    copy->append("s");
    EXPECT_EQ(*text, "text");
    EXPECT_FALSE(copy == text);
    EXPECT_FALSE(copy == Rare<std::string>());

    copy = text;
    EXPECT_TRUE(copy == text);
    copy = Rare<std::string>();
    EXPECT_FALSE(copy);
    EXPECT_TRUE(text == Rare<std::string>(std::optional<std::string>("text")));
}
