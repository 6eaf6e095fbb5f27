#pragma once

#include "FileFacts.h"
#include "FileURL.h"
#include "HeldFolder.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// One entry of a folder.
struct DirectoryEntry {
    std::string name;
    FileFacts facts;
};

using NameTest = std::function<bool(std::string_view name)>;
using NameVisitor = std::function<void(std::string_view name)>;

/// The core's only door to the file system.
///
/// Failures throw std::filesystem::filesystem_error with the errno of the call that failed and the paths
/// as given; nothing is retried or translated. Safe from any thread. All paths are absolute; one that
/// holds a NUL fails with invalid_argument.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// Whether anything stands at `url`; a link counts whether or not it leads anywhere. False only when
    /// that is known: a folder that cannot be searched or a device that does not answer throws.
    virtual bool fileExists(const FileURL& url) = 0;

    /// The same in a folder that is held, wherever that is by now.
    virtual bool fileExists(const HeldEntry& entry) = 0;

    /// Whether a folder, or a link to one, stands at `url`. Throws like fileExists.
    virtual bool directoryExists(const FileURL& url) = 0;

    /// The same place without links, "." and ".." in its path, as far as it exists; what does not exist is
    /// kept. Throws when a folder on the way cannot be searched.
    virtual FileURL resolvingLinks(const FileURL& url) = 0;

    /// The entries of `folder` with their facts, in the order of the file system, without hidden ones (a
    /// leading dot) and without names that are not valid UTF-8. Does not descend. An entry that vanishes
    /// meanwhile is left out; any other failure to read an entry's facts throws. `folder` may be a link
    /// to a folder.
    virtual std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder) = 0;

    /// The same, but the screen-capture flag, which takes as long to read as all the rest, may be left unread
    /// (false) where `flagMatters` says no of the entry's name. It is called from several threads.
    virtual std::vector<DirectoryEntry> contentsWithFlags(
        const FileURL& folder, const NameTest& /*flagMatters*/)
    {
        return contentsOfDirectory(folder);
    }

    /// Passes every name in `folder` to `visit`, hidden ones and invalid UTF-8, too. Returns false, having
    /// visited none or some, where something may stand at a name that is not listed: on a disk that takes
    /// "a" for "A", say. Throws when the folder cannot be listed.
    virtual bool visitNames(const FileURL& /*folder*/, const NameVisitor& /*visit*/)
    {
        return false;
    }

    /// The same in a folder that is held, wherever that is by now.
    virtual bool visitNames(const HeldFolder& /*folder*/, const NameVisitor& /*visit*/)
    {
        return false;
    }

    /// Throws if the entries of `folder` cannot be listed and looked up: what contentsOfDirectory throws
    /// for the folder itself, such as no_such_file_or_directory, not_a_directory and permission_denied.
    /// Looks at no entry, so it costs the same for a full folder as for an empty one.
    virtual void requireListable(const FileURL& folder) = 0;

    /// The facts of one entry; a link is described, not followed.
    virtual FileFacts facts(const FileURL& url) = 0;

    /// Holds the folder that `folder` leads to, by links, too, for moves out of it and into it. Throws what
    /// contentsOfDirectory throws for the folder itself.
    virtual HeldFolder hold(const FileURL& folder) = 0;

    /// The same for a folder whose path begins with that of `above`: it is found below that one, or not at all,
    /// where something else was put in the place of `above`.
    virtual HeldFolder holdBelow(const HeldFolder& above, const FileURL& folder) = 0;

    /// Makes `folder` and every missing parent, and holds it; an existing folder, or link to one, is fine. What
    /// was made has reached the disk.
    virtual HeldFolder createDirectory(const FileURL& folder) = 0;

    /// The same below `above`, as holdBelow.
    virtual HeldFolder createDirectoryBelow(const HeldFolder& above, const FileURL& folder) = 0;

    /// Has the changes of the names in `folder` reach the disk, where there is such a folder, it may be read
    /// and its file system can do that. Throws when the disk fails.
    virtual void flushDirectory(const FileURL& folder) = 0;

    /// Moves `from` to `to`, across file systems too, with its content, dates, mode, extended attributes
    /// and access lists. An existing `to` is never replaced: throws file_exists. What the destination's
    /// file system cannot keep is an error, too; and so is a folder that its path does not lead to any more
    /// (device_or_resource_busy where something else stands there), which the error names. On any failure
    /// the whole file is still at `from`. A file that comes out of a trash takes its trash record away with it.
    virtual void moveItem(const HeldEntry& from, const HeldEntry& to) = 0;

    /// The same between folders that nobody has looked at before.
    void moveItem(const FileURL& from, const FileURL& to);

    /// Moves `file` to the user's Trash, where other programs find it with its origin and date. Returns
    /// where it lies now, or nothing if the system cannot tell. A folder that its path does not lead to
    /// any more is an error as above. On any failure the file is still in its place.
    virtual std::optional<FileURL> trashItem(const HeldEntry& file) = 0;

    /// The same from a folder that nobody has looked at before.
    std::optional<FileURL> trashItem(const FileURL& url);

    /// Sets when the file was created; throws not_supported where that date cannot be changed.
    virtual void setCreationDate(const FileURL& url, Date date) = 0;

    /// The whole content of a regular file; throws file_too_large above `maxBytes`. Links are followed.
    virtual std::string readFile(const FileURL& url, std::size_t maxBytes) = 0;

    /// At most the first `maxBytes` bytes of a regular file, without touching its last-opened date where
    /// the system allows that. A link is not followed.
    virtual std::string readPrefix(const FileURL& url, std::size_t maxBytes) = 0;

    /// Replaces the content of `url` by `pieces`, one after the other, such that at any moment, also after
    /// a power cut, either the old or the new content stands there whole. On failure it is the old. The
    /// new content has reached the disk when this returns. A link at `url` stays; its target is replaced.
    virtual void writeAtomically(const FileURL& url, std::span<const std::string_view> pieces) = 0;

    /// Nothing if there is no file at `url`. Links are followed.
    virtual std::optional<FileIdentity> identity(const FileURL& url) = 0;
};

}  // namespace tidemark
