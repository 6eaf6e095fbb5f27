#pragma once

#include "JournalStore.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tidemark {

/// The journal during one sweep: the sweeps before it and its own record, which grows.
///
/// What has been encoded once is kept as text, so that saving after each action costs no more than writing
/// the bytes. The file is always the one that JournalStore::save would write.
class JournalWriter {
public:
    /// Adds an empty record for a sweep started at `startedAt` to the journal of `store`, which outlives the
    /// writer; nothing is saved yet. Throws what JournalStore::load throws.
    JournalWriter(const JournalStore& store, Date startedAt);

    const SweepRecord& record() const { return m_record; }

    void append(JournalEntry entry);

    /// Replaces the last entry's `to`.
    void setLastDestination(std::string path);

    /// Removes the entries from the `count`-th on.
    void truncate(std::size_t count);

    /// Throws what JournalStore::save throws.
    void save() const;

private:
    const JournalStore* m_store;
    SweepRecord m_record;
    std::string m_before;  // the text up to the last sweep before
    std::string m_head;  // from there to the record's entries
    std::string m_entries;  // theirs
    std::vector<std::size_t> m_ends;  // where each one's text ends in it
    std::string m_tail;  // the text behind them
};

}  // namespace tidemark
