#include "JSONEncoder.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace tidemark;

template <typename Value>
static std::string encoded(const Value& value)
{
    JSONEncoder encoder;
    encoder.encode(value);
    return encoder.takeText();
}

TEST(JSONEncoder, LaysOutNestedValuesWithTwoBlanksAndABlankOnBothSidesOfTheColon)
{
    JSONEncoder encoder;
    encoder.object([&] {
        encoder.memberArray("list", [&] {
            encoder.element(1.0);
            encoder.elementObject([&] { encoder.member("inner", true); });
        });
        encoder.member("text", "a");
    });

    EXPECT_EQ(encoder.text(),
        "{\n"
        "  \"list\" : [\n"
        "    1,\n"
        "    {\n"
        "      \"inner\" : true\n"
        "    }\n"
        "  ],\n"
        "  \"text\" : \"a\"\n"
        "}");
}

TEST(JSONEncoder, WritesAnEmptyLineBetweenEmptyBrackets)
{
    JSONEncoder encoder;
    encoder.object([&] {
        encoder.memberArray("array", [] {});
        encoder.memberObject("object", [] {});
    });

    EXPECT_EQ(encoder.text(), "{\n  \"array\" : [\n\n  ],\n  \"object\" : {\n\n  }\n}");
    EXPECT_EQ(encoded(std::vector<std::string>()), "[\n\n]");
}

TEST(JSONEncoder, OmitsAbsentMembers)
{
    JSONEncoder encoder;
    encoder.object([&] {
        encoder.member("absent", std::optional<std::string>());
        encoder.member("present", std::optional<bool>(false));
    });

    EXPECT_EQ(encoder.text(), "{\n  \"present\" : false\n}");
}

TEST(JSONEncoder, WritesStringsWithOnlyTheNecessaryEscapes)
{
    struct Row {
        const char* name;
        std::string_view text;
        std::string_view json;
    };
    for (const Row& row : {
             Row{"plain", "plain", R"("plain")"},
             Row{"slash", "/a/b", R"("/a/b")"},
             Row{"quote and backslash", R"(a"b\c)", R"("a\"b\\c")"},
             Row{"named controls", "\b\f\n\r\t", R"("\b\f\n\r\t")"},
             Row{"other controls", std::string_view("\0\x01\x1f", 3), R"("\u0000\u0001\u001f")"},
             Row{"delete is no control to JSON", "\x7f", "\"\x7f\""},
             Row{"non-ASCII", "Grüße 🌊 \u2028", "\"Grüße 🌊 \u2028\""},
             Row{"empty", "", R"("")"},
         }) {
        EXPECT_EQ(encoded(row.text), row.json) << row.name;
    }
}

TEST(JSONEncoder, WritesNumbersInTheirShortestPlainForm)
{
    struct Row {
        double value;
        const char* json;
    };
    for (const Row& row : {Row{0, "0"}, Row{60, "60"}, Row{-5, "-5"}, Row{600'000, "600000"},
             Row{2'592'000, "2592000"}, Row{0.5, "0.5"}, Row{0.1, "0.1"}, Row{1e300, "1e+300"},
             Row{1e-300, "1e-300"}}) {
        EXPECT_EQ(encoded(row.value), row.json);
    }
}

TEST(JSONEncoder, RefusesNumbersThatJSONCannotHold)
{
    EXPECT_THROW(encoded(std::numeric_limits<double>::infinity()), std::domain_error);
    EXPECT_THROW(encoded(std::numeric_limits<double>::quiet_NaN()), std::domain_error);
}

TEST(JSONEncoder, RefusesTextThatWouldMakeTheFileUnreadable)
{
    for (const char* text : {"/tmp/h\xff", "\xc0\xaf", "\xed\xa0\x80", "cut \xe2\x82"})
        EXPECT_THROW(encoded(std::string(text)), std::invalid_argument);
}

TEST(JSONEncoder, WritesDatesUUIDsAndURLsAsStrings)
{
    EXPECT_EQ(encoded(Date(Seconds(1741944413.9))), R"("2025-03-14T09:26:53Z")");
    EXPECT_EQ(encoded(QUuid::fromString(QStringLiteral("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0"))),
        R"("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0")");
    EXPECT_EQ(encoded(FileURL::directory("/Users/a/My Shots")), R"("file:///Users/a/My%20Shots/")");
}

TEST(JSONEncoder, CanStartInsideOfOpenBrackets)
{
    JSONEncoder encoder(2);
    encoder.elementObject([&] { encoder.member("a", true); });

    EXPECT_EQ(encoder.text(), "\n    {\n      \"a\" : true\n    }");
}
