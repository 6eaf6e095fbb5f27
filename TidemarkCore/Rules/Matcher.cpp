#include "Matcher.h"

#include "NamePattern.h"
#include "Text.h"

#include <algorithm>

namespace tidemark::Matcher {

namespace {

bool hasType(const RuleMatch& match, std::string_view name)
{
    if (match.fileTypes.empty())
        return true;
    const std::string extension = lowercased(pathExtension(name));
    return std::ranges::find(match.fileTypes, extension) != match.fileTypes.end();
}

bool matchesPattern(const RuleMatch& match, std::string_view name)
{
    return match.namePattern && NamePattern::matches(*match.namePattern, std::string(name));
}

/// A screen capture may carry any name, and a file that is named like one need not carry the flag.
bool hasNameOrFlag(const RuleMatch& match, std::string_view name, bool isScreenCapture)
{
    if (match.screenCaptureOnly.value_or(false))
        return isScreenCapture || matchesPattern(match, name);
    return !match.namePattern || matchesPattern(match, name);
}

}  // namespace

bool matches(const RuleMatch& match, const FileInfo& file, Date now)
{
    return fitsApartFromAge(match, file) && isOldEnough(match, file, now);
}

bool fitsApartFromAge(const RuleMatch& match, const FileInfo& file)
{
    const std::string_view name = file.url.lastPathComponent();
    return hasType(match, name) && hasNameOrFlag(match, name, file.isScreenCapture);
}

bool asksForFlag(const RuleMatch& match, std::string_view name)
{
    return match.screenCaptureOnly.value_or(false) && hasType(match, name)
        && !matchesPattern(match, name);
}

bool isOldEnough(const RuleMatch& match, const FileInfo& file, Date now)
{
    if (!match.minAge)
        return true;
    const Seconds age = now - ageDate(match, file);
    return !(age < *match.minAge);
}

Date ageDate(const RuleMatch& match, const FileInfo& file)
{
    switch (match.ageBasis) {
    case AgeBasis::modified:
        return file.modified;
    case AgeBasis::added:
        return file.added;
    case AgeBasis::lastOpened:
        return file.lastOpened;
    }
    return file.modified;
}

}  // namespace tidemark::Matcher
