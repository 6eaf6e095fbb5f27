#include "RuleAction.h"

#include "Overloaded.h"
#include "ScreenshotNamer.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tidemark {

namespace {

FileURL monthFolderIn(const FileURL& folder, std::string_view month)
{
    return folder.appending(month, FileURL::Kind::directory);
}

std::string lowercasedExtension(const FileURL& url)
{
    return lowercased(pathExtension(url.lastPathComponent()));
}

/// A title as it can stand in a file name; empty if nothing is left of it.
std::string cleanedTitle(std::string title)
{
    std::ranges::replace(title, '/', '-');
    std::ranges::replace(title, ':', '-');
    return std::string(trimmedOfWhitespaceAndNewlines(title));
}

std::string noteName(const FileInfo& file)
{
    std::string name;
    if (file.frontMatter && file.frontMatter->title)
        name = cleanedTitle(*file.frontMatter->title);
    if (name.empty())
        return std::string(file.url.lastPathComponent());
    if (const std::string extension = lowercasedExtension(file.url); !extension.empty())
        name += '.' + extension;
    return name;
}

SweepAction fileNote(const FileInfo& file, const FileURL& into, const TimeZone& timeZone)
{
    std::optional<std::string> month;
    if (file.frontMatter)
        month = file.frontMatter->month();
    if (!month)
        month = monthFolder(file.created, timeZone);
    return SweepAction::fileInto(monthFolderIn(into, *month), noteName(file));
}

}  // namespace

std::string monthFolder(Date date, const TimeZone& timeZone)
{
    const LocalTime time = timeZone.localTime(date);
    std::array<char, 32> buffer{};
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%04lld-%02u", static_cast<long long>(time.year), time.month);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

RuleAction RuleAction::fixed(SweepAction action)
{
    return {Fixed{std::move(action)}};
}

RuleAction RuleAction::fileScreenshot(FileURL into)
{
    return {FileScreenshot{std::move(into)}};
}

RuleAction RuleAction::archiveByMonth(FileURL into)
{
    return {ArchiveByMonth{std::move(into)}};
}

RuleAction RuleAction::fileMarkdown(FileURL into)
{
    return {FileMarkdown{std::move(into)}};
}

SweepAction RuleAction::resolve(const FileInfo& file, Date now) const
{
    return resolve(file, now, TimeZone::current());
}

SweepAction RuleAction::resolve(const FileInfo& file, Date /*now*/, const TimeZone& timeZone) const
{
    return std::visit(
        Overloaded{
            [](const Fixed& fixed) { return fixed.action; },
            [&](const FileScreenshot& screenshot) {
                return SweepAction::fileInto(screenshot.into,
                    ScreenshotNamer::fileName(
                        file.modified, std::nullopt, lowercasedExtension(file.url), timeZone));
            },
            // The archive rule makes a plain move; `archive` is for fixed actions.
            [&](const ArchiveByMonth& archive) {
                return SweepAction::move(
                    monthFolderIn(archive.into, monthFolder(file.added, timeZone)));
            },
            [&](const FileMarkdown& note) { return fileNote(file, note.into, timeZone); },
        },
        value);
}

void RuleAction::encode(JSONEncoder& encoder) const
{
    const auto member = [&encoder](std::string_view name, std::string_view key, const auto& held) {
        encoder.object([&] { encoder.memberObject(name, [&] { encoder.member(key, held); }); });
    };
    std::visit(
        Overloaded{
            [&](const Fixed& fixed) { member("fixed", "_0", fixed.action); },
            [&](const FileScreenshot& screenshot) {
                member("fileScreenshot", "into", screenshot.into);
            },
            [&](const ArchiveByMonth& archive) { member("archiveByMonth", "into", archive.into); },
            [&](const FileMarkdown& note) { member("fileMarkdown", "into", note.into); },
        },
        value);
}

RuleAction RuleAction::decode(const JSONDecoder& decoder)
{
    const auto found =
        decoder.enumerationCase({"fixed", "fileScreenshot", "archiveByMonth", "fileMarkdown"});
    const std::string_view name = found.first;
    const JSONDecoder& values = found.second;
    if (name == "fixed")
        return fixed(SweepAction::decode(values["_0"]));
    FileURL into = values["into"].fileURL();
    if (name == "fileScreenshot")
        return fileScreenshot(std::move(into));
    if (name == "archiveByMonth")
        return archiveByMonth(std::move(into));
    return fileMarkdown(std::move(into));
}

}  // namespace tidemark
