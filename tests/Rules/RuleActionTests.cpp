#include "RuleAction.h"

#include "ScopedEnvironment.h"

#include <gtest/gtest.h>

using namespace tidemark;

namespace {

const Date may3{Seconds(1714745100)};  // 2024-05-03 14:05 UTC
const Date march2023{Seconds(1678881600)};  // 2023-03-15 12:00 UTC
const Date endOfJanuary{Seconds(1706743800)};  // 2024-01-31 23:30 UTC
const FileURL into = FileURL::directory("/into");

FileInfo file(std::string name)
{
    return {.url = FileURL("/in/" + std::move(name)),
        .modified = may3,
        .added = may3,
        .lastOpened = may3,
        .created = march2023,
        .frontMatter = std::nullopt,
        .isScreenCapture = false};
}

FileInfo note(std::string name, std::optional<std::string> title, std::optional<std::string> date)
{
    FileInfo info = file(std::move(name));
    info.frontMatter = MarkdownFrontMatter{.title = std::move(title), .date = std::move(date)};
    return info;
}

SweepAction fileInto(std::string month, std::string name)
{
    return SweepAction::fileInto(FileURL::directory("/into/" + std::move(month)), std::move(name));
}

}  // namespace

class RuleActionTest : public testing::Test {
protected:
    ScopedEnvironment m_zone{"TZ", "UTC"};
};

TEST_F(RuleActionTest, AFixedActionStaysAsItIs)
{
    for (const SweepAction& action : {SweepAction::move(into), SweepAction::archive(into),
             SweepAction::trash(), SweepAction::rename("x"), SweepAction::fileInto(into, "x")})
        EXPECT_EQ(RuleAction::fixed(action).resolve(file("a.txt"), may3), action);
}

TEST_F(RuleActionTest, AScreenshotIsNamedByItsModificationDate)
{
    const RuleAction action = RuleAction::fileScreenshot(into);

    EXPECT_EQ(action.resolve(file("Screenshot 1.PNG"), may3),
        SweepAction::fileInto(into, "2024-05-03 14.05.png"));
    EXPECT_EQ(
        action.resolve(file("Screenshot"), may3), SweepAction::fileInto(into, "2024-05-03 14.05"));
}

TEST_F(RuleActionTest, TheArchiveIsAPlainMoveIntoTheMonthInWhichTheFileWasAdded)
{
    FileInfo info = file("a.zip");
    info.added = march2023;

    EXPECT_EQ(RuleAction::archiveByMonth(into).resolve(info, may3),
        SweepAction::move(FileURL::directory("/into/2023-03")));
}

TEST_F(RuleActionTest, MonthsAreThoseOfTheCurrentTimeZone)
{
    struct Row {
        const char* zone;
        const char* month;
    };
    FileInfo info = file("a.zip");
    info.added = endOfJanuary;
    for (const Row& row :
        {Row{"UTC", "/into/2024-01"}, Row{"Europe/Berlin", "/into/2024-02"},
            Row{"America/New_York", "/into/2024-01"}, Row{"Pacific/Kiritimati", "/into/2024-02"}}) {
        const ScopedEnvironment zone("TZ", row.zone);
        EXPECT_EQ(RuleAction::archiveByMonth(into).resolve(info, may3),
            SweepAction::move(FileURL::directory(row.month)))
            << row.zone;
    }
}

TEST_F(RuleActionTest, ANoteIsNamedByItsTitleAndFiledByItsMonth)
{
    struct Row {
        const char* name;
        FileInfo file;
        SweepAction expected;
    };
    for (const Row& row : {
             Row{"title and date", note("x.md", "Plan", "2024-05-03"),
                 fileInto("2024-05", "Plan.md")},
             Row{"a title of blanks, no date", note("x.md", "  ", std::nullopt),
                 fileInto("2023-03", "x.md")},
             Row{"slash and colon", note("x.markdown", "a/b:c", std::nullopt),
                 fileInto("2023-03", "a-b-c.markdown")},
             Row{"colon and blank", note("notes.MD", "Plan: Q3", std::nullopt),
                 fileInto("2023-03", "Plan- Q3.md")},
             Row{"no extension", note("x", "Plan", std::nullopt), fileInto("2023-03", "Plan")},
             Row{"newlines and blanks around the title",
                 note("x.md", "\n\t Plan\u2028\u00A0", std::nullopt),
                 fileInto("2023-03", "Plan.md")},
             Row{"a title of slashes is not empty", note("x.md", "//", std::nullopt),
                 fileInto("2023-03", "--.md")},
             Row{"a month without leading zero does not count", note("x.md", "Plan", "2024-7-01"),
                 fileInto("2023-03", "Plan.md")},
             Row{"an impossible month counts", note("x.md", "Plan", "2024-13-01"),
                 fileInto("2024-13", "Plan.md")},
             Row{"no title", note("Keep Me.MD", std::nullopt, "2024-05-03"),
                 fileInto("2024-05", "Keep Me.MD")},
             Row{"no front matter", file("Keep Me.MD"), fileInto("2023-03", "Keep Me.MD")},
         }) {
        EXPECT_EQ(RuleAction::fileMarkdown(into).resolve(row.file, may3), row.expected) << row.name;
    }
}

TEST_F(RuleActionTest, AMonthFolderHasYearAndMonth)
{
    const TimeZone utc = TimeZone::named("UTC").value();

    EXPECT_EQ(monthFolder(may3, utc), "2024-05");
    EXPECT_EQ(monthFolder(Date(Seconds(-1)), utc), "1969-12");
    EXPECT_EQ(monthFolder(distantPast, utc), "0001-01");
    EXPECT_EQ(monthFolder(endOfJanuary, TimeZone::named("Asia/Tokyo").value()), "2024-02");
}
