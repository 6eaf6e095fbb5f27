#pragma once

#include "FileManager.h"
#include "JournalStore.h"

#include <memory>
#include <mutex>
#include <optional>

namespace tidemark {

/// Reads the journal for display, decoding it again only when the file has changed.
///
/// Safe from any thread.
class JournalReader {
public:
    /// `fileManager` outlives the reader.
    JournalReader(JournalStore store, FileManager& fileManager);

    /// The journal as the file holds it now. Throws what JournalStore::load throws.
    std::shared_ptr<const Journal> read();

private:
    JournalStore m_store;
    FileManager* m_fileManager;
    std::mutex m_mutex;
    std::shared_ptr<const Journal> m_journal;  // what was read last
    std::optional<FileIdentity> m_identity;  // of the file it was read from
};

}  // namespace tidemark
