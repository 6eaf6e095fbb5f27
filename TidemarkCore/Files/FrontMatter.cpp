#include "FrontMatter.h"

#include "Text.h"

#include <array>
#include <filesystem>

namespace tidemark::FrontMatter {

namespace {

constexpr std::string_view delimiter = "---";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// How many bytes the newline character at the head of `text` has; 0 if another character stands there.
std::size_t newlineLength(std::string_view text)
{
    // U+000A to U+000D are one byte; U+0085, U+2028 and U+2029 follow.
    static constexpr std::array<std::string_view, 3> others{
        "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};
    if (text.front() >= '\n' && text.front() <= '\r')
        return 1;
    for (const std::string_view other : others) {
        if (text.starts_with(other))
            return other.size();
    }
    return 0;
}

/// Takes the first line off `rest`; nothing when no line is left.
std::optional<std::string_view> takeLine(std::optional<std::string_view>& rest)
{
    if (!rest)
        return std::nullopt;
    const std::string_view text = *rest;
    for (std::size_t end = 0; end < text.size(); ++end) {
        if (const std::size_t length = newlineLength(text.substr(end)); length > 0) {
            rest = text.substr(end + length);
            return text.substr(0, end);
        }
    }
    rest.reset();
    return text;
}

std::string_view withoutQuotes(std::string_view value)
{
    const bool isQuoted = value.size() >= 2 && value.front() == value.back()
        && (value.front() == '"' || value.front() == '\'');
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

void readLine(std::string_view line, MarkdownFrontMatter& result)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos)
        return;
    const std::string key = lowercased(trimmedOfWhitespace(line.substr(0, colon)));
    const std::string_view value = withoutQuotes(trimmedOfWhitespace(line.substr(colon + 1)));
    if (value.empty())
        return;
    if (key == "title")
        result.title = value;
    else if (key == "date" || key == "created")
        result.date = value;
}

}  // namespace

MarkdownFrontMatter parse(std::string_view text)
{
    MarkdownFrontMatter result;
    std::optional<std::string_view> rest = text;
    if (trimmedOfWhitespace(*takeLine(rest)) != delimiter)
        return result;
    while (const auto line = takeLine(rest)) {
        if (trimmedOfWhitespace(*line) == delimiter)
            break;
        readLine(*line, result);
    }
    return result;
}

std::optional<MarkdownFrontMatter> read(
    FileManager& fileManager, const FileURL& url, std::size_t maxBytes)
{
    std::string bytes;
    try {
        bytes = fileManager.readPrefix(url, maxBytes);
    } catch (const std::filesystem::filesystem_error&) {
        return std::nullopt;  // a note that cannot be read is filed like one without front matter
    }
    if (!isValidUTF8(bytes))
        return std::nullopt;
    std::string_view text = bytes;
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    MarkdownFrontMatter result = parse(text);
    return result.isEmpty() ? std::nullopt : std::optional(std::move(result));
}

}  // namespace tidemark::FrontMatter
