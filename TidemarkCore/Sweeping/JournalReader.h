#pragma once

#include "ActivityItem.h"
#include "FileManager.h"
#include "JournalStore.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tidemark {

/// Reads the journal for display. Decodes it again only when the file has changed, and keeps no more of it
/// than what is shown.
///
/// Safe from any thread. One thread decodes at a time; whoever needs what it decodes waits for it.
///
/// A journal that was found bad is not decoded again either: its exception is kept and thrown again, so it
/// may reach several threads and is not to be changed. A file that could not be read at all is tried again.
class JournalReader {
public:
    /// `kept` is how many of the newest entries are kept. `fileManager` outlives the reader.
    JournalReader(JournalStore store, FileManager& fileManager, std::size_t kept = 20);
    ~JournalReader();

    /// Whether the journal was read as its file is now: `hasSweep`, and `newest` for as many entries as are
    /// kept, then answer or throw without decoding it. Never waits for a thread that decodes, never fails,
    /// and costs one look at the file.
    bool isCurrent() const;

    /// Whether the journal holds a sweep, as its file is now. Throws what JournalStore::load throws.
    bool hasSweep();

    /// The newest entries of all sweeps, newest first. For more than are kept the journal is decoded each
    /// time, unless it holds no more. Throws what JournalStore::load throws.
    std::vector<ActivityItem> newest(std::size_t limit);

private:
    struct Digest;
    using SharedDigest = std::shared_ptr<const Digest>;

    /// Of the file as it is now, with at least `wanted` entries if there are so many.
    SharedDigest read(std::size_t wanted);
    SharedDigest readWith(std::size_t wanted, const std::optional<FileIdentity>& identity) const;
    SharedDigest lastRead() const;
    void keep(SharedDigest digest);

    JournalStore m_store;
    FileManager* m_fileManager;
    std::size_t m_kept;
    std::mutex m_decoding;  // held while decoding
    mutable std::mutex m_mutex;  // guards m_lastRead; never held for long
    SharedDigest m_lastRead;
};

}  // namespace tidemark
