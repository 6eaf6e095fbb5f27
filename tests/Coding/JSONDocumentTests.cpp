#include "DecodingError.h"
#include "JSONCoders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::HasSubstr;
using testing::StartsWith;

static std::string errorOf(std::string text)
{
    try {
        const JSONDocument document(std::move(text), "file.json");
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "no error";
}

TEST(JSONDocument, RefusesWhatIsNoJSONNamingTheFile)
{
    struct Row {
        const char* name;
        std::string text;
    };
    for (const Row& row : {
             Row{"empty", ""},
             Row{"blank", " \n "},
             Row{"a word", "hello"},
             Row{"unclosed object", R"({"a": 1)"},
             Row{"unclosed array", R"({"a": [1, 2)"},
             Row{"unclosed string", R"({"a": "b)"},
             Row{"missing comma", R"({"a": 1 "b": 2})"},
             Row{"superfluous comma", R"({"a": 1,})"},
             Row{"missing value", R"({"a":})"},
             Row{"missing colon", R"({"a" 1})"},
             Row{"missing key", R"({: 1})"},
             Row{"text behind the end", R"({"a": 1} x)"},
             Row{"a second document", "{}{}"},
             Row{"a bracket too many", "{}}"},
             Row{"single quotes", "{'a': 1}"},
             Row{"comment", "{} // no"},
             Row{"misspelt literal", R"({"a": nul})"},
             Row{"capital literal", R"({"a": True})"},
             Row{"leading zero", R"({"a": 01})"},
             Row{"plus sign", R"({"a": +1})"},
             Row{"lonely minus", R"({"a": -})"},
             Row{"point without digits", R"({"a": 1.})"},
             Row{"no digits before the point", R"({"a": .5})"},
             Row{"exponent without digits", R"({"a": 1e})"},
             Row{"exponent sign without digits", R"({"a": 1e+})"},
             Row{"hexadecimal", R"({"a": 0x10})"},
             Row{"not a number", R"({"a": NaN})"},
             Row{"raw newline in a string", "{\"a\": \"b\nc\"}"},
             Row{"unknown escape", R"({"a": "\q"})"},
             Row{"half a surrogate pair", R"({"a": "\ud800"})"},
             Row{"invalid UTF-8", "{\"a\": \"\xff\"}"},
             Row{"overlong UTF-8", "{\"a\": \"\xc0\xaf\"}"},
             Row{"NUL behind the end", std::string("{}\0", 3)},
         }) {
        EXPECT_THAT(errorOf(row.text), StartsWith("file.json: ")) << row.name;
    }
}

TEST(JSONDocument, ChecksValuesThatNobodyAsksFor)
{
    EXPECT_THAT(errorOf(R"({"ignored": {"deep": [1, 2, {"x": tru}]}})"), StartsWith("file.json: "));
    EXPECT_THAT(errorOf(R"({"ignored": ["\uZZZZ"]})"), StartsWith("file.json: "));
}

TEST(JSONDocument, AcceptsIgnoredNumbersThatFitNoType)
{
    EXPECT_EQ(
        errorOf(R"({"a": 123456789012345678901234567890, "b": 1e999, "c": -0.0})"), "no error");
}

TEST(JSONDocument, AcceptsAByteOrderMark)
{
    EXPECT_EQ(errorOf("\xEF\xBB\xBF{}"), "no error");
    EXPECT_NE(errorOf("\xEF\xBB\xBF"), "no error");
    EXPECT_NE(errorOf("\xEF\xBB\xBF\xEF\xBB\xBF{}"), "no error");
}

TEST(JSONDocument, TellsLineAndColumnOfAnError)
{
    struct Row {
        const char* name;
        std::string text;
        const char* error;
    };
    for (const Row& row : {
             Row{"a wrong word", "{\n  \"a\" : 1,\n  \"b\" : wrong\n}",
                 "file.json: line 3, column 9: not valid JSON"},
             Row{"a text that ends too early", "{\n  \"a\" : [1, 2",
                 "file.json: line 2, column 14: not valid JSON"},
             Row{"a string that does not end", "{\n  \"a\" : \"b",
                 "file.json: line 2, column 11: not valid JSON: a string does not end"},
             Row{"a line that is not UTF-8", "{\n  \"\xff\" : 1\n}",
                 "file.json: line 2, column 1: not valid UTF-8"},
             Row{"nothing at all", "", "file.json: the file is empty"},
         }) {
        EXPECT_EQ(errorOf(row.text), row.error) << row.name;
    }
}

TEST(JSONDocument, RefusesEveryTornText)
{
    const std::string whole = R"({"a": [1, 2.5, {"b": "ü\n"}, null, true], "c": {}})";
    ASSERT_EQ(errorOf(whole), "no error");
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_NE(errorOf(whole.substr(0, length)), "no error") << length << " bytes";
}

TEST(JSONDocument, RefusesBottomlessNesting)
{
    const auto nested = [](int depth) {
        return std::string(static_cast<std::size_t>(depth), '[')
            + std::string(static_cast<std::size_t>(depth), ']');
    };
    EXPECT_EQ(errorOf(nested(256)), "no error");
    EXPECT_THAT(errorOf(nested(257)), HasSubstr("nested"));
    EXPECT_THAT(errorOf(nested(1'000'000)), HasSubstr("nested"));
}

TEST(JSONDocument, StaysValidWhenItIsMoved)
{
    JSONDocument document(R"({"a": "text"})", "file.json");
    const JSONDocument moved = std::move(document);

    EXPECT_EQ(moved.root()["a"].string(), "text");
}
