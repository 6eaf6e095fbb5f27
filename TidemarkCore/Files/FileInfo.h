#pragma once

#include "Date.h"
#include "FileManager.h"
#include "FileURL.h"
#include "MarkdownFrontMatter.h"
#include "Rare.h"

namespace tidemark {

/// The facts of one file that rules test.
///
/// A plain value: it holds no handle and never touches the disk. Every date is present: a fact that the
/// file system does not keep has been replaced by its fallback when the value was made.
struct FileInfo {
    FileURL url;  ///< Absolute, as listed; a link is not followed.
    Date modified;  ///< Distant past when unknown.
    Date added;  ///< When the entry came into its folder; `modified` when unknown.
    Date lastOpened;  ///< `modified` when unknown.
    Date created;  ///< `modified` when unknown.
    Rare<MarkdownFrontMatter> frontMatter;  ///< Markdown notes only.
    bool isScreenCapture = false;

    /// Reads the facts of one file. Throws filesystem_error when they cannot be read; front matter that
    /// cannot be read is absent.
    static FileInfo readingResourceValues(FileManager& fileManager, const FileURL& url);

    /// The same from facts that are known already; reads no more than the head of a Markdown note.
    static FileInfo withFacts(FileManager& fileManager, FileURL url, const FileFacts& facts);

    bool operator==(const FileInfo&) const = default;
};

}  // namespace tidemark
