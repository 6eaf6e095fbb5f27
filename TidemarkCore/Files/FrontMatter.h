#pragma once

#include "FileManager.h"
#include "MarkdownFrontMatter.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace tidemark {

/// Reads the metadata block at the head of a Markdown note: lines "key: value" between two lines of three
/// hyphens.
namespace FrontMatter {

/// Never fails: a text without such a block gives an empty result, a block without end all that it holds.
/// `text` is valid UTF-8.
MarkdownFrontMatter parse(std::string_view text);

/// Parses the first `maxBytes` bytes of a file. Nothing if the file cannot be read, if those bytes are not
/// valid UTF-8 (also when the limit cuts a character in two), or if they hold neither title nor date.
std::optional<MarkdownFrontMatter> read(
    FileManager& fileManager, const FileURL& url, std::size_t maxBytes);

}  // namespace FrontMatter

}  // namespace tidemark
