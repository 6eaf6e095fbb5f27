#include "JournalReader.h"

namespace tidemark {

JournalReader::JournalReader(JournalStore store, FileManager& fileManager)
    : m_store(std::move(store))
    , m_fileManager(&fileManager)
{
}

std::shared_ptr<const Journal> JournalReader::read()
{
    const std::lock_guard lock(m_mutex);
    // Taken before reading: a file that changes meanwhile is read again next time.
    const std::optional<FileIdentity> identity = m_fileManager->identity(m_store.url());
    if (m_journal == nullptr || identity != m_identity) {
        m_journal = std::make_shared<const Journal>(m_store.load());
        m_identity = identity;
    }
    return m_journal;
}

}  // namespace tidemark
