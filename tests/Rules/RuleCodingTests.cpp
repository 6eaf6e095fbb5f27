#include "DecodingError.h"
#include "DefaultRules.h"
#include "JSONCoders.h"
#include "Rule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::HasSubstr;

namespace {

template <typename Value>
Value decoded(const std::string& text)
{
    return JSONCoders::decode<Value>(text, "file.json");
}

template <typename Value>
std::string errorOf(const std::string& text)
{
    try {
        decoded<Value>(text);
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "no error";
}

const char* const ruleText = R"({"id": "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0", "name": "N",
    "isEnabled": false, "match": {"fileTypes": ["png"], "ageBasis": "added"},
    "action": {"fixed": {"_0": {"trash": {}}}}})";

/// `text` without the member that starts with `key`.
std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    return text.replace(text.find(what), what.size(), by);
}

}  // namespace

TEST(RuleCoding, WritesEveryActionInItsForm)
{
    const FileURL url = FileURL::directory("/Users/a/My Shots");
    struct Row {
        RuleAction action;
        const char* compact;
    };
    for (const Row& row : {
             Row{RuleAction::fileScreenshot(url),
                 R"({"fileScreenshot":{"into":"file:///Users/a/My%20Shots/"}})"},
             Row{RuleAction::archiveByMonth(url),
                 R"({"archiveByMonth":{"into":"file:///Users/a/My%20Shots/"}})"},
             Row{RuleAction::fileMarkdown(url),
                 R"({"fileMarkdown":{"into":"file:///Users/a/My%20Shots/"}})"},
             Row{RuleAction::fixed(SweepAction::move(url)),
                 R"({"fixed":{"_0":{"move":{"to":"file:///Users/a/My%20Shots/"}}}})"},
             Row{RuleAction::fixed(SweepAction::archive(url)),
                 R"({"fixed":{"_0":{"archive":{"to":"file:///Users/a/My%20Shots/"}}}})"},
             Row{RuleAction::fixed(SweepAction::trash()), R"({"fixed":{"_0":{"trash":{}}}})"},
             Row{RuleAction::fixed(SweepAction::rename("x y")),
                 R"({"fixed":{"_0":{"rename":{"to":"x y"}}}})"},
             Row{RuleAction::fixed(SweepAction::fileInto(FileURL("/f"), "x")),
                 R"({"fixed":{"_0":{"fileInto":{"folder":"file:///f","renamedTo":"x"}}}})"},
         }) {
        std::string text = JSONCoders::encode(row.action);
        EXPECT_EQ(decoded<RuleAction>(text), row.action) << row.compact;
        EXPECT_EQ(decoded<RuleAction>(row.compact), row.action) << row.compact;
        std::erase_if(text, [](char character) { return character == '\n'; });
        std::string expected = row.compact;
        std::erase(text, ' ');
        std::erase(expected, ' ');
        EXPECT_EQ(text, expected);
    }
}

TEST(RuleCoding, ReadsATrashActionFromAnEmptyObject)
{
    EXPECT_EQ(decoded<SweepAction>(R"({"trash": {}})"), SweepAction::trash());
    EXPECT_EQ(decoded<SweepAction>(R"({"trash": {}, "comment": "x"})"), SweepAction::trash());
}

TEST(RuleCoding, RefusesMalformedActions)
{
    constexpr const char* numberOfKeys = "Invalid number of keys found, expected one.";
    struct Row {
        const char* name;
        const char* text;
        const char* reason;
    };
    for (const Row& row : {
             Row{"two cases", R"({"move": {"to": "file:///a"}, "trash": {}})", numberOfKeys},
             Row{"no case", "{}", numberOfKeys},
             Row{"unknown case", R"({"delete": {}})", numberOfKeys},
             Row{"no object", R"("trash")", "expected an object, found a string"},
             Row{"values are no object", R"({"trash": []})", "expected an object, found an array"},
             Row{"missing value", R"({"move": {}})", "the key \"to\" is missing"},
             Row{"wrong type", R"({"rename": {"to": 1}})", "expected a string, found a number"},
             Row{"no URL", R"({"move": {"to": "Desktop"}})", "expected a file URL"},
             Row{"web URL", R"({"move": {"to": "https://a/b"}})", "expected a file URL"},
             Row{"half a pair", R"({"fileInto": {"folder": "file:///a"}})",
                 "the key \"renamedTo\" is missing"},
         }) {
        EXPECT_THAT(errorOf<SweepAction>(row.text), HasSubstr(row.reason)) << row.name;
    }
    EXPECT_THAT(errorOf<RuleAction>(R"({"trash": {}})"), HasSubstr(numberOfKeys));
    EXPECT_THAT(errorOf<RuleAction>(R"({"fixed": {}})"), HasSubstr("the key \"_0\" is missing"));
}

TEST(RuleCoding, WritesARuleWithSortedKeysAndWithoutAbsentMembers)
{
    const Rule rule = decoded<Rule>(ruleText);

    EXPECT_EQ(JSONCoders::encode(rule),
        "{\n"
        "  \"action\" : {\n"
        "    \"fixed\" : {\n"
        "      \"_0\" : {\n"
        "        \"trash\" : {\n"
        "\n"
        "        }\n"
        "      }\n"
        "    }\n"
        "  },\n"
        "  \"id\" : \"0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0\",\n"
        "  \"isEnabled\" : false,\n"
        "  \"match\" : {\n"
        "    \"ageBasis\" : \"added\",\n"
        "    \"fileTypes\" : [\n"
        "      \"png\"\n"
        "    ]\n"
        "  },\n"
        "  \"name\" : \"N\"\n"
        "}");
}

TEST(RuleCoding, ReadsBackEveryRuleThatItWrites)
{
    std::vector<Rule> rules =
        DefaultRules::all(FileURL::directory("/s"), FileURL::directory("/a ü"));
    rules.push_back(DefaultRules::markdown(FileURL::directory("/n")));
    rules.push_back({.name = "\"quoted\"\n",
        .isEnabled = false,
        .match = {.namePattern = "", .minAge = Seconds(0.25), .screenCaptureOnly = false},
        .action = RuleAction::fixed(SweepAction::rename("x"))});
    for (const Rule& rule : rules)
        EXPECT_EQ(decoded<Rule>(JSONCoders::encode(rule)), rule) << rule.name;
}

TEST(RuleCoding, ReadsNullAndMissingOptionalMembersAsAbsent)
{
    const RuleMatch expected{.fileTypes = {}, .ageBasis = AgeBasis::lastOpened};

    EXPECT_EQ(decoded<RuleMatch>(R"({"fileTypes": [], "ageBasis": "lastOpened"})"), expected);
    EXPECT_EQ(decoded<RuleMatch>(R"({"fileTypes": [], "ageBasis": "lastOpened", "minAge": null,
        "namePattern": null, "screenCaptureOnly": null})"),
        expected);
}

TEST(RuleCoding, RefusesARuleWithAnythingMissingOrWrong)
{
    struct Row {
        const char* name;
        std::string text;
        const char* error;
    };
    for (const Row& row :
        {
            Row{"id", replaced(ruleText, "\"id\"", "\"x\""), "the key \"id\" is missing"},
            Row{"name", replaced(ruleText, "\"name\"", "\"x\""), "the key \"name\" is missing"},
            Row{"isEnabled", replaced(ruleText, "\"isEnabled\"", "\"x\""),
                "the key \"isEnabled\" is missing"},
            Row{"match", replaced(ruleText, "\"match\"", "\"x\""), "the key \"match\" is missing"},
            Row{"action", replaced(ruleText, "\"action\"", "\"x\""),
                "the key \"action\" is missing"},
            Row{"fileTypes", replaced(ruleText, "\"fileTypes\"", "\"x\""),
                "match: the key \"fileTypes\" is missing"},
            Row{"ageBasis", replaced(ruleText, "\"ageBasis\"", "\"x\""),
                "match: the key \"ageBasis\" is missing"},
            Row{"unknown basis", replaced(ruleText, "\"added\"", "\"size\""),
                "match.ageBasis: Cannot initialize AgeBasis from invalid String value size"},
            Row{"no boolean", replaced(ruleText, "false", "0"),
                "isEnabled: expected a boolean, found a number"},
            Row{"no string in a list", replaced(ruleText, "\"png\"", "7"),
                "match.fileTypes[0]: expected a string, found a number"},
            Row{"no UUID", replaced(ruleText, "0F1E2D3C", "0F1E"), "id: expected a UUID"},
            Row{"null", replaced(ruleText, "\"N\"", "null"), "name: expected a string, found null"},
        }) {
        EXPECT_THAT(errorOf<Rule>(row.text), HasSubstr(row.error)) << row.name;
    }
}
