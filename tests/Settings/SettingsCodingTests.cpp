#include "DecodingError.h"
#include "DefaultRules.h"
#include "JSONCoders.h"
#include "Settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::HasSubstr;

namespace {

Settings decoded(const std::string& text)
{
    return JSONCoders::decode<Settings>(text, "settings.json");
}

std::string errorOf(const std::string& text)
{
    try {
        decoded(text);
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "no error";
}

Rule screenshotRule(std::optional<std::string> pattern, std::optional<bool> only)
{
    Rule rule = DefaultRules::screenshots(FileURL::directory("/s"));
    rule.match.namePattern = std::move(pattern);
    rule.match.screenCaptureOnly = only;
    return rule;
}

}  // namespace

TEST(SettingsCoding, ReadsAnEmptyObjectAsTheDefaults)
{
    const Settings settings = decoded("{}");

    EXPECT_TRUE(settings.folders.empty());
    EXPECT_EQ(settings.markdownSubfolder, "Notes");
    EXPECT_EQ(settings.gracePeriod, Seconds(60));
    EXPECT_FALSE(settings.isPaused);
    EXPECT_FALSE(settings.hasOnboarded);
    EXPECT_EQ(settings, Settings());
}

TEST(SettingsCoding, WritesEveryKeySorted)
{
    const Settings settings{.folders = {{.path = "/in", .rules = {}, .sortsMarkdown = false}}};

    EXPECT_EQ(JSONCoders::encode(settings),
        "{\n"
        "  \"folders\" : [\n"
        "    {\n"
        "      \"path\" : \"/in\",\n"
        "      \"rules\" : [\n"
        "\n"
        "      ],\n"
        "      \"sortsMarkdown\" : false\n"
        "    }\n"
        "  ],\n"
        "  \"gracePeriod\" : 60,\n"
        "  \"hasOnboarded\" : false,\n"
        "  \"isPaused\" : false,\n"
        "  \"markdownSubfolder\" : \"Notes\"\n"
        "}");
}

TEST(SettingsCoding, ReadsBackWhatItWrites)
{
    const Settings settings{
        .folders = {{.path = "/in \"ü\"",
                        .rules = DefaultRules::all(
                            FileURL::directory("/home/a/Desktop/Screenshots"), FileURL("/x"))},
            {.path = "/other", .rules = {}, .sortsMarkdown = false}},
        .markdownSubfolder = "",
        .gracePeriod = Seconds(0.5),
        .isPaused = true,
        .hasOnboarded = true,
    };

    EXPECT_EQ(decoded(JSONCoders::encode(settings)), settings);
}

TEST(SettingsCoding, UpgradesTheLayoutWithOneListOfRules)
{
    const Rule rule = DefaultRules::installers(30);
    const std::string text =
        R"({"watchedFolders": ["/a", "/b"], "rules": [)" + JSONCoders::encode(rule) + "]}";

    const Settings expected{.folders = {{.path = "/a", .rules = {rule}, .sortsMarkdown = true},
                                {.path = "/b", .rules = {rule}, .sortsMarkdown = true}}};
    EXPECT_EQ(decoded(text), expected);
    EXPECT_THAT(JSONCoders::encode(decoded(text)), Not(HasSubstr("watchedFolders")));
}

TEST(SettingsCoding, ReadsHalfOfTheOldLayout)
{
    EXPECT_EQ(decoded(R"({"watchedFolders": ["/a"]})").folders,
        (std::vector<WatchedFolder>{{.path = "/a", .rules = {}, .sortsMarkdown = true}}));
    EXPECT_TRUE(decoded(R"({"rules": []})").folders.empty());
}

TEST(SettingsCoding, IgnoresTheOldLayoutBesideTheNew)
{
    const Settings settings =
        decoded(R"({"folders": [{"path": "/new"}], "watchedFolders": 7, "rules": "x"})");

    ASSERT_EQ(settings.folders.size(), 1U);
    EXPECT_EQ(settings.folders[0].path, "/new");
    EXPECT_TRUE(settings.folders[0].rules.empty());
}

TEST(SettingsCoding, GivesAFolderItsDefaults)
{
    EXPECT_EQ(decoded(R"({"folders": [{"path": "/a"}]})").folders,
        (std::vector<WatchedFolder>{{.path = "/a", .rules = {}, .sortsMarkdown = true}}));
}

TEST(SettingsCoding, DropsRulesThatFileMarkdownAndKeepsTheOthersInOrder)
{
    Settings settings{.folders = {{.path = "/a"}}};
    const Rule first = DefaultRules::installers(1);
    const Rule last = DefaultRules::oldDownloads(2, FileURL("/x"));
    settings.folders[0].rules = {first, DefaultRules::markdown(FileURL("/n")), last};

    const Settings loaded = decoded(JSONCoders::encode(settings));

    EXPECT_EQ(loaded.folders[0].rules, (std::vector{first, last}));
    EXPECT_THAT(JSONCoders::encode(loaded), Not(HasSubstr("fileMarkdown")));
}

TEST(SettingsCoding, TheOldLayoutsMarkdownRuleIsGoneOnceTheNewLayoutWasSavedAndLoaded)
{
    const Rule rule = DefaultRules::markdown(FileURL("/n"));
    const Settings old =
        decoded(R"({"watchedFolders": ["/a"], "rules": [)" + JSONCoders::encode(rule) + "]}");

    EXPECT_EQ(old.folders[0].rules, std::vector{rule});
    EXPECT_TRUE(decoded(JSONCoders::encode(old)).folders[0].rules.empty());
}

TEST(SettingsCoding, UpgradesTheRuleThatKnewScreenshotsByNameAlone)
{
    struct Row {
        const char* name;
        Rule rule;
        std::optional<bool> expected;
    };
    for (const Row& row : {
             Row{"absent", screenshotRule("Screenshot*", std::nullopt), true},
             Row{"explicitly off", screenshotRule("Screenshot*", false), false},
             Row{"on", screenshotRule("Screenshot*", true), true},
             Row{"lower case", screenshotRule("screenshot*", std::nullopt), std::nullopt},
             Row{"another pattern", screenshotRule("Screen*", std::nullopt), std::nullopt},
             Row{"no pattern", screenshotRule(std::nullopt, std::nullopt), std::nullopt},
         }) {
        const std::string rule = JSONCoders::encode(row.rule);
        const Settings current =
            decoded(R"({"folders": [{"path": "/a", "rules": [)" + rule + "]}]}");
        const Settings old = decoded(R"({"watchedFolders": ["/a"], "rules": [)" + rule + "]}");
        EXPECT_EQ(current.folders[0].rules[0].match.screenCaptureOnly, row.expected) << row.name;
        EXPECT_EQ(old.folders[0].rules[0].match.screenCaptureOnly, row.expected) << row.name;
    }
}

TEST(SettingsCoding, RefusesValuesOfTheWrongType)
{
    struct Row {
        const char* text;
        const char* error;
    };
    for (const Row& row :
        {
            Row{R"({"markdownSubfolder": 1})",
                "markdownSubfolder: expected a string, found a number"},
            Row{R"({"gracePeriod": "60"})", "gracePeriod: expected a number, found a string"},
            Row{R"({"isPaused": 0})", "isPaused: expected a boolean, found a number"},
            Row{R"({"hasOnboarded": "yes"})", "hasOnboarded: expected a boolean, found a string"},
            Row{R"({"folders": {}})", "folders: expected an array, found an object"},
            Row{R"({"folders": [7]})", "folders[0]: expected an object, found a number"},
            Row{R"({"folders": [{"rules": []}]})", "folders[0]: the key \"path\" is missing"},
            Row{R"({"folders": [{"path": "/a", "rules": [{}]}]})",
                "folders[0].rules[0]: the key \"id\" is missing"},
            Row{R"({"folders": [{"path": "/a", "sortsMarkdown": "no"}]})",
                "folders[0].sortsMarkdown: expected a boolean, found a string"},
            Row{R"({"watchedFolders": "/a"})", "watchedFolders: expected an array, found a string"},
            Row{R"({"watchedFolders": ["/a", 2]})",
                "watchedFolders[1]: expected a string, found a number"},
            Row{R"({"rules": {}})", "rules: expected an array, found an object"},
            Row{"[]", "settings.json: expected an object, found an array"},
        }) {
        EXPECT_THAT(errorOf(row.text), HasSubstr(row.error));
    }
}

TEST(SettingsCoding, IgnoresUnknownKeysAndNumbersThatFitNoType)
{
    EXPECT_EQ(decoded(R"({"version": 999999999999999999999999999999, "theme": {"dark": [1]}})"),
        Settings());
}
