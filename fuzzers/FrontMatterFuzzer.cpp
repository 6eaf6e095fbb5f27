#include "FrontMatter.h"

#include "Destination.h"
#include "Require.h"
#include "RuleAction.h"
#include "Text.h"
#include "TimeZone.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tidemark {

static void requireToStandIn(std::string_view text, const std::optional<std::string>& value)
{
    if (!value)
        return;
    require(!value->empty(), "a value that is there is not empty");
    require(text.find(*value) != std::string_view::npos, "a value is a piece of the note");
    for (const std::string_view newline :
        {"\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"})
        require(value->find(newline) == std::string::npos, "a value has one line");
}

static void requireToReadTheSame(const MarkdownFrontMatter& matter)
{
    std::string text = "---\n";
    if (matter.title)
        text += "title: '" + *matter.title + "'\n";
    if (matter.date)
        text += "Date: \"" + *matter.date + "\"\n";
    require(FrontMatter::parse(text + "---\ntitle: other\n") == matter,
        "front matter that is written reads the same");
}

static void requireMonth(const MarkdownFrontMatter& matter)
{
    const auto month = matter.month();
    if (month)
        require(matter.date->starts_with(*month) && isFileName(*month) && month->size() <= 28,
            "a month is the head of the date and can name a folder");
    if (matter.createdDate())
        require(month && isValidUTF8(*month), "a date with a day has a month");
}

/// The folder is the month's in the folder for notes; the name is refused, or one that stays in it.
static void requireToStayInFolder(const MarkdownFrontMatter& matter, const std::string& fileName)
{
    const FileURL notes = FileURL::directory("/home/a/Desktop/Notes");
    FileInfo file;
    file.url = FileURL::directory("/home/a/Desktop").appending(fileName);
    file.frontMatter = matter;
    const PlannedAction planned{.source = file.url,
        .ruleID = {},
        .ruleName = {},
        .action = RuleAction::fileMarkdown(notes).resolve(file, Date{}, *TimeZone::named("UTC")),
        .stampCreated = std::nullopt};
    const auto wanted = Destination::of(planned);
    require(wanted.has_value(), "a note is filed");
    const FileURL folder = FileURL::directory(std::string{wanted->folder});
    require(folder.parent() == notes && isFileName(folder.lastPathComponent())
            && folder.lastPathComponent().size() <= 255,
        "a note comes into a folder right inside of that for notes");
    try {
        const std::string name = wanted->prepare([] {}, [](std::string_view) { return false; });
        require(isFileName(name) && isValidUTF8(name), "a note's name stays in its folder");
        require(pathExtension(fileName).empty()
                || pathExtension(name) == lowercased(pathExtension(fileName)) || name == fileName,
            "a note keeps its extension");
    } catch (const std::filesystem::filesystem_error&) {
        require(pathExtension(fileName).empty() || wanted->name.find('\0') != std::string::npos,
            "only what is no name is refused");
    }
}

}  // namespace tidemark

/// Whatever a note begins with: it is read without harm, and neither title nor date lead the note
/// anywhere else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    const std::string text{reinterpret_cast<const char*>(data), size};
    if (!isValidUTF8(text))
        return 0;
    const MarkdownFrontMatter matter = FrontMatter::parse(text);
    requireToStandIn(text, matter.title);
    requireToStandIn(text, matter.date);
    requireToReadTheSame(matter);
    requireMonth(matter);
    for (const char* name : {"note.md", "Note.MarkDown", "note"})
        requireToStayInFolder(matter, name);
    return 0;
}
