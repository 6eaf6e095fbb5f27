#include "Planner.h"

#include "DefaultRules.h"
#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"
#include "ScopedEnvironment.h"

#include <gtest/gtest.h>

using namespace tidemark;

namespace {

const Date now{Seconds(1714745100)};  // 2024-05-03 14:05 UTC
const Date longAgo = now - Seconds(400 * secondsPerDay);
const FileURL folder = FileURL::directory("/out");

FileInfo file(std::string name, Date date = now)
{
    return {.url = FileURL("/in/" + std::move(name)),
        .modified = date,
        .added = date,
        .lastOpened = date,
        .created = date,
        .frontMatter = std::nullopt,
        .isScreenCapture = false};
}

Rule moving(const std::string& name, std::vector<std::string> types = {}, bool isEnabled = true)
{
    return {.name = name,
        .isEnabled = isEnabled,
        .match = {.fileTypes = std::move(types)},
        .action = RuleAction::fixed(SweepAction::move(FileURL::directory("/" + name)))};
}

std::vector<std::string> ruleNames(const SweepPlan& plan)
{
    std::vector<std::string> names;
    for (const PlannedAction& action : plan.actions)
        names.push_back(action.ruleName);
    return names;
}

}  // namespace

TEST(Planner, TheFirstEnabledRuleThatMatchesActs)
{
    struct Row {
        const char* name;
        std::vector<Rule> rules;
        std::vector<std::string> acting;
    };
    for (const Row& row : {
             Row{"both match", {moving("first"), moving("second")}, {"first"}},
             Row{"the first does not match", {moving("first", {"png"}), moving("second")},
                 {"second"}},
             Row{"the first is disabled", {moving("first", {}, false), moving("second")},
                 {"second"}},
             Row{"none matches", {moving("first", {"png"})}, {}},
             Row{"all are disabled", {moving("first", {}, false)}, {}},
             Row{"no rules", {}, {}},
         }) {
        EXPECT_EQ(ruleNames(Planner::plan({file("a.txt")}, row.rules, now)), row.acting)
            << row.name;
    }
}

TEST(Planner, AnEmptyListOfFilesGivesAnEmptyPlan)
{
    EXPECT_TRUE(Planner::plan({}, {moving("any")}, now).actions.empty());
}

TEST(Planner, KeepsTheOrderOfTheFilesAndLeavesOutThoseThatNoRuleMatches)
{
    const Rule rule = moving("text", {"txt"});

    const SweepPlan plan =
        Planner::plan({file("z.txt"), file("m.png"), file("a.txt")}, {rule}, now);

    ASSERT_EQ(plan.actions.size(), 2U);
    EXPECT_EQ(plan.actions[0].source, FileURL("/in/z.txt"));
    EXPECT_EQ(plan.actions[1].source, FileURL("/in/a.txt"));
}

TEST(Planner, TellsTheRuleAndTheResolvedAction)
{
    const ScopedEnvironment zone("TZ", "UTC");
    const Rule rule = DefaultRules::screenshots(folder);

    const SweepPlan plan = Planner::plan({file("Screenshot.png")}, {rule}, now);

    const SweepPlan expected{{{.source = FileURL("/in/Screenshot.png"),
        .ruleID = rule.id,
        .ruleName = "File screenshots",
        .action = SweepAction::fileInto(folder, "2024-05-03 14.05.png"),
        .stampCreated = std::nullopt}}};
    EXPECT_EQ(plan, expected);
}

TEST(Planner, StampsTheFrontMatterDateOnlyOntoNotesThatAreFiledByIt)
{
    const ScopedEnvironment zone("TZ", "UTC");
    FileInfo note = file("n.md");
    note.frontMatter = MarkdownFrontMatter{.title = "Plan", .date = "2024-05-03"};
    FileInfo undated = note;
    undated.frontMatter->date = "May 2024";
    const std::optional<Date> midnight = Date(Seconds(1714694400));
    struct Row {
        const char* name;
        FileInfo file;
        Rule rule;
        std::optional<Date> stamp;
    };
    for (const Row& row : {
             Row{"filed note", note, DefaultRules::markdown(folder), midnight},
             Row{"the same note moved plainly", note, moving("plain"), std::nullopt},
             Row{"a note whose date is no day", undated, DefaultRules::markdown(folder),
                 std::nullopt},
             Row{"a note without front matter", file("n.md"), DefaultRules::markdown(folder),
                 std::nullopt},
         }) {
        const SweepPlan plan = Planner::plan({row.file}, {row.rule}, now);
        ASSERT_EQ(plan.actions.size(), 1U) << row.name;
        EXPECT_EQ(plan.actions[0].stampCreated, row.stamp) << row.name;
    }
}

TEST(Planner, AppliesTheDefaultRulesInTheirOrder)
{
    const std::vector<Rule> rules = DefaultRules::all(folder, folder);
    FileInfo openedLately = file("Setup.dmg", longAgo);
    openedLately.lastOpened = now;
    struct Row {
        const char* name;
        FileInfo file;
        std::vector<std::string> acting;
    };
    for (const Row& row :
        {
            Row{"an old screenshot is a screenshot", file("Screenshot.png", longAgo),
                {"File screenshots"}},
            Row{"an old installer is trashed", file("Setup.dmg", longAgo), {"Clean up installers"}},
            Row{"an old installer that was opened lately is archived", openedLately,
                {"Archive old downloads"}},
            Row{"a new installer stays", file("Setup.pkg"), {}},
            Row{"an old file is archived", file("a.zip", longAgo), {"Archive old downloads"}},
            Row{"a new file stays", file("a.zip"), {}},
        }) {
        EXPECT_EQ(ruleNames(Planner::plan({row.file}, rules, now)), row.acting) << row.name;
    }
}

TEST(Planner, TellsWhenTheEarliestFileThatIsTooYoungForItsRulesComesOfAge)
{
    Rule aged = moving("aged", {"txt"});
    aged.match.minAge = Seconds(100);
    struct Row {
        const char* name;
        std::vector<FileInfo> files;
        std::optional<Date> comingOfAge;
    };
    for (const Row& row : {
             Row{"no file", {}, std::nullopt},
             Row{"a file of age", {file("a.txt", longAgo)}, std::nullopt},
             Row{"a file that no rule fits", {file("a.png")}, std::nullopt},
             Row{"a young file", {file("a.txt")}, now + Seconds(100)},
             Row{"the earliest of several",
                 {file("a.txt"), file("b.txt", now - Seconds(40)), file("c.txt", longAgo),
                     file("d.txt", now - Seconds(20))},
                 now + Seconds(60)},
         }) {
        EXPECT_EQ(Planner::plan(row.files, {aged}, now).comingOfAge, row.comingOfAge) << row.name;
    }
}

TEST(Planner, PlansAFolderFromItsScan)
{
    InMemoryFileManager disk{{"/in/b 10.txt", ""}, {"/in/b 9.txt", ""}, {"/in/c.png", ""}};

    const SweepPlan plan =
        Planner::plan(FileURL::directory("/in"), {moving("text", {"txt"})}, now, disk);

    ASSERT_EQ(plan.actions.size(), 2U);
    EXPECT_EQ(plan.actions[0].source, FileURL("/in/b 9.txt"));
    EXPECT_THROW(Planner::plan(FileURL::directory("/absent"), {}, now, disk),
        std::filesystem::filesystem_error);
}

TEST(Planner, HasTheScreenCaptureFlagReadOnlyForFilesForWhichARuleAsks)
{
    /// A disk that leaves out every flag that it may.
    struct SparingDisk final : FaultInjectingFileManager {
        using FaultInjectingFileManager::FaultInjectingFileManager;

        std::vector<DirectoryEntry> contentsWithFlags(
            const FileURL& in, const NameTest& flagMatters) override
        {
            auto entries = contentsOfDirectory(in);
            for (DirectoryEntry& entry : entries) {
                if (flagMatters(entry.name))
                    asked.push_back(entry.name);
                else
                    entry.facts.isScreenCapture = false;
            }
            return entries;
        }
        std::vector<std::string> asked;
    };
    InMemoryFileManager memory{{"/in/a.png", ""}, {"/in/Screenshot.png", ""}, {"/in/c.txt", ""}};
    for (const char* path : {"/in/a.png", "/in/Screenshot.png", "/in/c.txt"})
        memory.setScreenCapture(path);
    Rule captures = DefaultRules::screenshots(folder);
    Rule disabled = captures;
    disabled.match.fileTypes = {};
    disabled.isEnabled = false;
    const FileURL in = FileURL::directory("/in");

    SparingDisk disk(memory);
    EXPECT_EQ(Planner::plan(in, {disabled, captures}, now, disk),
        Planner::plan(in, {disabled, captures}, now, memory));
    EXPECT_EQ(disk.asked, std::vector<std::string>{"a.png"});

    disk.asked.clear();
    EXPECT_TRUE(Planner::plan(in, {disabled}, now, disk).actions.empty());
    EXPECT_TRUE(disk.asked.empty());
}
