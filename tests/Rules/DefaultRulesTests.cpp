#include "DefaultRules.h"

#include "Matcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::ElementsAre;

static const FileURL folder = FileURL::directory("/into");
static const Date now{Seconds(1714745100)};

/// The rules' members but for their ids, which differ from call to call.
static std::vector<Rule> withoutIDs(std::vector<Rule> rules)
{
    for (Rule& rule : rules)
        rule.id = QUuid();
    return rules;
}

TEST(DefaultRules, HaveTheirStockConditionsAndActions)
{
    const Rule screenshots{.id = {},
        .name = "File screenshots",
        .isEnabled = true,
        .match = {.fileTypes = {"png"},
            .namePattern = "Screenshot*",
            .ageBasis = AgeBasis::modified,
            .screenCaptureOnly = true},
        .action = RuleAction::fileScreenshot(folder)};
    const Rule installers{.id = {},
        .name = "Clean up installers",
        .isEnabled = true,
        .match = {.fileTypes = {"dmg", "pkg"},
            .minAge = Seconds(7 * 86400),
            .ageBasis = AgeBasis::lastOpened},
        .action = RuleAction::fixed(SweepAction::trash())};
    const Rule oldDownloads{.id = {},
        .name = "Archive old downloads",
        .isEnabled = true,
        .match = {.fileTypes = {}, .minAge = Seconds(8 * 86400), .ageBasis = AgeBasis::added},
        .action = RuleAction::archiveByMonth(folder)};
    const Rule markdown{.id = {},
        .name = "File Markdown notes",
        .isEnabled = true,
        .match = {.fileTypes = {"md", "markdown"}, .ageBasis = AgeBasis::modified},
        .action = RuleAction::fileMarkdown(folder)};

    EXPECT_THAT(withoutIDs({DefaultRules::screenshots(folder), DefaultRules::installers(7),
                    DefaultRules::oldDownloads(8, folder), DefaultRules::markdown(folder)}),
        ElementsAre(screenshots, installers, oldDownloads, markdown));
}

TEST(DefaultRules, DifferOnlyInTheirIdFromCallToCall)
{
    const Rule first = DefaultRules::screenshots(folder);
    const Rule second = DefaultRules::screenshots(folder);

    EXPECT_NE(first.id, second.id);
    EXPECT_EQ(withoutIDs({first}), withoutIDs({second}));
}

TEST(DefaultRules, AllAreScreenshotsInstallersAndOldDownloadsInThisOrder)
{
    const FileURL archive = FileURL::directory("/archive");

    EXPECT_EQ(withoutIDs(DefaultRules::all(folder, archive)),
        withoutIDs({DefaultRules::screenshots(folder), DefaultRules::installers(30),
            DefaultRules::oldDownloads(30, archive)}));
    EXPECT_EQ(DefaultRules::all(folder, archive)[2].match.minAge, Seconds(2'592'000));
}

TEST(DefaultRules, TakeEveryInstallerAtZeroDaysButThoseOpenedInTheFuture)
{
    const Rule rule = DefaultRules::installers(0);
    FileInfo file{.url = FileURL("/in/Setup.dmg"),
        .modified = now,
        .added = now,
        .lastOpened = now,
        .created = now,
        .frontMatter = std::nullopt,
        .isScreenCapture = false};

    EXPECT_EQ(rule.match.minAge, Seconds(0));
    EXPECT_TRUE(Matcher::matches(rule.match, file, now));
    file.lastOpened = now + Seconds(1);
    EXPECT_FALSE(Matcher::matches(rule.match, file, now));
}
