#pragma once

#include "FileManager.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// Keeps bookmarks, which lead to files and folders again in a later run, in one file: a JSON array of the
/// bookmarks' bytes in base64.
///
/// A facility of the core for platforms that grant access folder by folder and want the grant kept over a
/// restart. Linux grants access by the user, so nothing in the application uses it: a bookmark is the path
/// there, whether or not its scope is to be secured. Plain value; keeps nothing between calls. Not locked.
class BookmarkStore {
public:
    enum class Scope { plain, security };

    /// What a bookmark leads to.
    struct Resolved {
        FileURL url;
        bool isStale = false;  ///< Nothing stands there any more.

        bool operator==(const Resolved&) const = default;
    };

    /// The file manager outlives the store.
    BookmarkStore(FileURL url, FileManager& fileManager);

    const FileURL& url() const { return m_url; }

    /// The bytes of a bookmark of `url`. Throws filesystem_error: no_such_file_or_directory when nothing
    /// stands there.
    std::string bookmark(const FileURL& url, Scope scope) const;

    /// Where the bookmark leads. Throws filesystem_error: invalid_argument when `data` is no bookmark, and
    /// whatever keeps the place from being looked up.
    Resolved resolve(std::string_view data, Scope scope) const;

    /// The bookmarks in the order in which they were saved. Empty when there is no file, and also when it
    /// cannot be read or holds something else: the user can grant access again. Never throws.
    std::vector<std::string> load() const;

    /// Replaces the file, making its folder and every missing parent first. Throws filesystem_error; the file
    /// is as it was then.
    void save(const std::vector<std::string>& bookmarks) const;

private:
    FileURL m_url;
    FileManager* m_fileManager;
};

}  // namespace tidemark
