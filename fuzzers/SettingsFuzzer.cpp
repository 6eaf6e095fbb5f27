#include "DecodingError.h"
#include "Destination.h"
#include "JSONCoders.h"
#include "Require.h"
#include "Settings.h"
#include "Text.h"
#include "TimeZone.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

static std::optional<Settings> decoded(const std::string& text)
{
    try {
        return JSONCoders::decode<Settings>(text, "settings.json");
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// The older layout's rules for notes are read, and are gone with the next time.
static Settings withoutRulesForNotes(Settings settings)
{
    for (WatchedFolder& folder : settings.folders)
        std::erase_if(folder.rules, [](const Rule& rule) { return rule.action.filesMarkdown(); });
    return settings;
}

static void requireToReadTheSame(const Settings& settings)
{
    const auto again = decoded(JSONCoders::encode(settings));
    require(again == withoutRulesForNotes(settings), "settings that are written read the same");
    require(decoded(JSONCoders::encode(*again)) == again, "and ever again");
}

static void requireUpgraded(const WatchedFolder& folder)
{
    for (const Rule& rule : folder.rules) {
        require(rule.match.namePattern != "Screenshot*" || rule.match.screenCaptureOnly,
            "the rule for screenshots knows the flag");
    }
}

static FileInfo fileCalled(std::string_view name)
{
    FileInfo file;
    file.url = FileURL::directory("/home/a/Desktop").appending(name);
    return file;
}

/// Where the rule would have the file: nowhere, or under one name that stays in its folder.
static void requireToStayInFolder(const Rule& rule, const FileInfo& file)
{
    const PlannedAction planned{.source = file.url,
        .ruleID = rule.id,
        .ruleName = rule.name,
        .action = rule.action.resolve(file, file.modified, *TimeZone::named("UTC")),
        .stampCreated = std::nullopt};
    const auto wanted = Destination::of(planned);
    if (!wanted)
        return;
    try {
        const std::string name = wanted->prepare([] {}, [](std::string_view) { return false; });
        require(isFileName(name), "a file is put into its folder, nowhere else");
    } catch (const std::filesystem::filesystem_error&) {
        // The name is refused, and the file stays.
    }
}

}  // namespace tidemark

/// Whatever stands in settings.json: it is read without harm, what was read is written such that it reads the
/// same, and no rule in it leads a file by its name out of the folder that the rule names.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    const std::array files{fileCalled("Screenshot 1.PNG"), fileCalled("README")};
    const auto settings = decoded(std::string{reinterpret_cast<const char*>(data), size});
    if (!settings)
        return 0;
    requireToReadTheSame(*settings);
    for (const WatchedFolder& folder : settings->folders) {
        requireUpgraded(folder);
        for (const Rule& rule : folder.rules)
            std::ranges::for_each(
                files, [&](const FileInfo& file) { requireToStayInFolder(rule, file); });
    }
    return 0;
}
