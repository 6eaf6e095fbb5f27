#include "JournalWriter.h"

#include "JSONCoders.h"

#include <array>
#include <cassert>

namespace tidemark {

JournalWriter::JournalWriter(const JournalStore& store, Journal journal, Date startedAt)
    : m_store(&store)
{
    m_record.startedAt = startedAt;
    journal.sweeps.push_back(m_record);
    m_head = JSONCoders::encode(journal);

    // The new record is the last, so its empty list of entries is the last empty brackets.
    constexpr std::string_view emptyList = "[\n\n";
    const std::size_t list = m_head.rfind(emptyList);
    assert(list != std::string::npos);
    m_tail = m_head.substr(list + 2);
    m_head.resize(list + 1);
}

void JournalWriter::append(JournalEntry entry)
{
    constexpr std::size_t depthOfEntries = 4;
    JSONEncoder encoder(depthOfEntries);
    encoder.element(entry);
    if (!m_entries.empty())
        m_entries += ',';
    m_entries += encoder.text();
    m_ends.push_back(m_entries.size());
    m_record.entries.push_back(std::move(entry));
}

void JournalWriter::setLastDestination(std::string path)
{
    JournalEntry entry = std::move(m_record.entries.back());
    entry.to = std::move(path);
    truncate(m_record.entries.size() - 1);
    append(std::move(entry));
}

void JournalWriter::truncate(std::size_t count)
{
    assert(count <= m_record.entries.size());
    m_record.entries.resize(count);
    m_ends.resize(count);
    m_entries.resize(m_ends.empty() ? 0 : m_ends.back());
}

void JournalWriter::save() const
{
    const std::string_view entries = m_entries.empty() ? std::string_view("\n") : m_entries;
    m_store->saveText(std::array<std::string_view, 3>{m_head, entries, m_tail});
}

}  // namespace tidemark
