#pragma once

#include "FileManager.h"
#include "Journal.h"

#include <span>
#include <string>
#include <string_view>

namespace tidemark {

/// Reads and writes the journal file. Keeps nothing between calls, repairs nothing.
///
/// Not locked: whoever loads, changes and saves holds the SupportLock meanwhile.
class JournalStore {
public:
    /// `fileManager` outlives the store.
    JournalStore(FileURL url, FileManager& fileManager);

    const FileURL& url() const { return m_url; }

    /// Without sweeps when there is no file. Throws filesystem_error when it cannot be read (file_too_large
    /// above 1 GiB), DecodingError when it is damaged in any place; the file stays as it is.
    Journal load() const;

    /// The text that `save` would write for what `load` would return; throws what load throws. Much faster
    /// than both for a file that this program wrote.
    std::string loadText() const;

    /// Replaces the file, making its folder if need be; it is on the disk when this returns. Throws
    /// filesystem_error; the old file stands then.
    void save(const Journal& journal) const;

    /// The same for a journal that is encoded already, in pieces.
    void saveText(std::span<const std::string_view> pieces) const;

private:
    FileURL m_url;
    FileManager* m_fileManager;
};

}  // namespace tidemark
