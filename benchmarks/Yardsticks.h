#pragma once

#include "FileURL.h"

#include <simdjson.h>

#include <memory>
#include <span>
#include <string_view>

namespace tidemark::bench {

/// The least that has to be done for some work, by the system's own calls. All throw filesystem_error.
namespace Yardsticks {

/// Replaces a file such that it survives a power cut: write beside it, fdatasync, rename, fsync of the
/// folder.
void replaceDurably(const FileURL& url, std::span<const std::string_view> pieces);

/// renameat2 that refuses to replace.
void rename(const FileURL& from, const FileURL& to);

/// A JSON document with the memory that it lives in.
struct ParsedFile {
    std::unique_ptr<simdjson::dom::parser> parser;
    simdjson::dom::element root;
};

/// Reads a file whole and parses it by simdjson's DOM parser. Throws simdjson_error, too.
ParsedFile readAndParse(const FileURL& url);

}  // namespace Yardsticks

}  // namespace tidemark::bench
