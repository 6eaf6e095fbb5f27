#include "JournalWriter.h"

#include "JSONCoders.h"

#include <array>
#include <cassert>

namespace tidemark {

JournalWriter::JournalWriter(const JournalStore& store, Date startedAt)
    : m_store(&store)
    , m_before(store.loadText())
{
    constexpr std::string_view endOfJournal = "\n  ]\n}";
    constexpr std::string_view startOfEmptyList = "[\n";
    assert(m_before.ends_with(endOfJournal));
    m_before.resize(m_before.size() - endOfJournal.size());
    if (m_before.ends_with(startOfEmptyList))
        m_before.pop_back();
    else
        m_head = ',';

    m_record.startedAt = startedAt;
    constexpr std::size_t depthOfSweeps = 2;
    JSONEncoder encoder(depthOfSweeps);
    encoder.element(m_record);
    m_head += encoder.text();
    const std::size_t list = m_head.find(startOfEmptyList);
    assert(list != std::string::npos);
    m_tail = m_head.substr(list + startOfEmptyList.size()).append(endOfJournal);
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
    m_store->saveText(std::array<std::string_view, 4>{m_before, m_head, entries, m_tail});
}

}  // namespace tidemark
