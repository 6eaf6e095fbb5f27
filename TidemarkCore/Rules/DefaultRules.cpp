#include "DefaultRules.h"

#include "Text.h"

#include <algorithm>

namespace tidemark::DefaultRules {

namespace {

std::vector<std::string> extensions(std::initializer_list<std::string_view> names)
{
    std::vector<std::string> result(names.size());
    std::ranges::transform(names, result.begin(), lowercased);
    return result;
}

Seconds days(int count)
{
    return Seconds(count * secondsPerDay);
}

}  // namespace

Rule screenshots(FileURL into)
{
    return {
        .name = "File screenshots",
        .match = {.fileTypes = extensions({"png"}),
            .namePattern = "Screenshot*",
            .screenCaptureOnly = true},
        .action = RuleAction::fileScreenshot(std::move(into)),
    };
}

Rule installers(int trashAfterDaysUnopened)
{
    return {
        .name = "Clean up installers",
        .match = {.fileTypes = extensions({"dmg", "pkg"}),
            .minAge = days(trashAfterDaysUnopened),
            .ageBasis = AgeBasis::lastOpened},
        .action = RuleAction::fixed(SweepAction::trash()),
    };
}

Rule oldDownloads(int olderThanDays, FileURL archiveInto)
{
    return {
        .name = "Archive old downloads",
        .match = {.minAge = days(olderThanDays), .ageBasis = AgeBasis::added},
        .action = RuleAction::archiveByMonth(std::move(archiveInto)),
    };
}

Rule markdown(FileURL into)
{
    return {
        .name = "File Markdown notes",
        .match = {.fileTypes = extensions({"md", "markdown"})},
        .action = RuleAction::fileMarkdown(std::move(into)),
    };
}

std::vector<Rule> all(FileURL screenshotsFolder, FileURL archiveFolder)
{
    constexpr int month = 30;
    return {screenshots(std::move(screenshotsFolder)), installers(month),
        oldDownloads(month, std::move(archiveFolder))};
}

}  // namespace tidemark::DefaultRules
