#include "DecodingError.h"
#include "JSONCoders.h"

#include <gtest/gtest.h>

#include <functional>

using namespace tidemark;

namespace {

JSONDocument document(std::string text)
{
    return {std::move(text), "file.json"};
}

std::string errorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace

TEST(JSONDecoder, ReadsValuesOfEveryType)
{
    const JSONDocument json = document(R"({
        "string": "a\u00fc\n\ud83c\udf0a", "number": 2.5e1, "boolean": true,
        "date": "2025-03-14T10:26:53+01:00", "uuid": "0f1e2d3c-4B5A-6978-8796-a5b4c3d2e1f0",
        "url": "file:///Users/a/My%20Shots/", "list": ["x", "y"]})");
    const JSONDecoder root = json.root();

    EXPECT_EQ(root["string"].string(), "aü\n🌊");
    EXPECT_EQ(root["number"].number(), 25);
    EXPECT_TRUE(root["boolean"].boolean());
    EXPECT_EQ(root["date"].date(), Date(Seconds(1741944413)));
    EXPECT_EQ(root["uuid"].uuid(),
        QUuid::fromString(QStringLiteral("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0")));
    EXPECT_EQ(root["url"].fileURL(), FileURL::directory("/Users/a/My Shots"));
    EXPECT_EQ(root["list"].elements().at(1).string(), "y");
}

TEST(JSONDecoder, NamesFileCodingPathAndBothTypesWhenATypeIsWrong)
{
    const JSONDocument json = document(
        R"({"folders": [{}, {}, {"rules": [{"match": {"minAge": "old"}}]}], "flag": null})");
    const JSONDecoder root = json.root();

    EXPECT_EQ(errorOf([&] {
        root["folders"].elements()[2]["rules"].elements()[0]["match"]["minAge"].number();
    }),
        "file.json: folders[2].rules[0].match.minAge: expected a number, found a string");
    EXPECT_EQ(errorOf([&] { root["folders"].boolean(); }),
        "file.json: folders: expected a boolean, found an array");
    EXPECT_EQ(
        errorOf([&] { root["flag"].string(); }), "file.json: flag: expected a string, found null");
    EXPECT_EQ(errorOf([&] { root.elements(); }), "file.json: expected an array, found an object");
}

TEST(JSONDecoder, NamesTheMissingKey)
{
    const JSONDocument json = document(R"({"a": {}})");

    EXPECT_EQ(errorOf([&] { json.root()["b"]; }), "file.json: the key \"b\" is missing");
    EXPECT_EQ(errorOf([&] { json.root()["a"]["c"]; }), "file.json: a: the key \"c\" is missing");
}

TEST(JSONDecoder, CountsANullMemberAsMissingWhereItMayBe)
{
    const JSONDocument json = document(R"({"null": null, "there": false})");

    EXPECT_FALSE(json.root().find("null"));
    EXPECT_FALSE(json.root().find("absent"));
    EXPECT_TRUE(json.root().find("there"));
}

TEST(JSONDecoder, TakesTheLastOfTwoMembersWithOneKey)
{
    EXPECT_EQ(document(R"({"a": 1, "a": 2})").root()["a"].number(), 2);
}

TEST(JSONDecoder, ReportsAScalarInPlaceOfTheWholeDocument)
{
    struct Row {
        const char* text;
        const char* found;
    };
    for (const Row& row : {Row{"1", "a number"}, Row{"\"a\"", "a string"}, Row{"true", "a boolean"},
             Row{"null", "null"}, Row{" null\n", "null"}}) {
        EXPECT_EQ(errorOf([&] { document(row.text).root()["a"]; }),
            std::string("file.json: expected an object, found ") + row.found);
    }
}

TEST(JSONDecoder, RefusesNumbersThatDoNotFit)
{
    EXPECT_EQ(errorOf([] { document(R"({"a": 1e999})").root()["a"].number(); }),
        "file.json: a: the number 1e999 does not fit");
    EXPECT_EQ(document(R"({"a": 123456789012345678901234567890})").root()["a"].number(),
        123456789012345678901234567890.0);
}

TEST(JSONDecoder, RefusesMalformedDatesUUIDsAndURLs)
{
    struct Row {
        const char* name;
        const char* text;
        std::function<void(const JSONDecoder&)> read;
    };
    const auto date = [](const JSONDecoder& decoder) { decoder.date(); };
    const auto uuid = [](const JSONDecoder& decoder) { decoder.uuid(); };
    const auto url = [](const JSONDecoder& decoder) { decoder.fileURL(); };
    for (const Row& row : {
             Row{"date without zone", "2025-03-14T09:26:53", date},
             Row{"date with fraction", "2025-03-14T09:26:53.5Z", date},
             Row{"day that does not exist", "2025-02-30T09:26:53Z", date},
             Row{"no date", "yesterday", date},
             Row{"UUID in braces", "{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}", uuid},
             Row{"short UUID", "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F", uuid},
             Row{"UUID with a foreign letter", "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1FG", uuid},
             Row{"web address", "https://example.org/a", url},
             Row{"plain path", "/Users/a", url},
             Row{"URL with a NUL", "file:///a%00b", url},
         }) {
        const JSONDocument json = document(std::string("[\"") + row.text + "\"]");
        EXPECT_NE(errorOf([&] { row.read(json.root().elements()[0]); }), "no error") << row.name;
    }
}

TEST(JSONDecoder, ReadsAnEnumerationByItsOnlyKnownKey)
{
    const JSONDocument json = document(R"({"later": 1, "move": {"to": "x"}})");
    const auto found = json.root().enumerationCase({"move", "trash"});

    EXPECT_EQ(found.first, "move");
    EXPECT_EQ(found.second["to"].string(), "x");
}

TEST(JSONDecoder, RefusesAnEnumerationWithoutExactlyOneKnownKey)
{
    for (const char* text :
        {R"({"e": {}})", R"({"e": {"other": {}}})", R"({"e": {"move": {}, "trash": {}}})"}) {
        EXPECT_EQ(errorOf([&] {
            document(text).root()["e"].enumerationCase({"move", "trash"});
        }),
            "file.json: e: Invalid number of keys found, expected one.")
            << text;
    }
}
