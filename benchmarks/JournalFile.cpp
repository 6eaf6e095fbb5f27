#include "JournalFile.h"

#include "SampleJournal.h"

namespace tidemark::bench {

JournalFile::JournalFile(const Place& place, std::size_t entries)
    : m_support(place.folder->url().appending(
        "display of " + std::to_string(entries), FileURL::Kind::directory))
{
    JournalStore(url(), m_fileManager).save(SampleJournal::make(entries));
    place.flush();
}

std::unique_ptr<SweepController> JournalFile::makeController()
{
    return std::make_unique<SweepController>(
        SettingsStore(m_support.appending("settings.json"), m_fileManager, m_clock),
        JournalStore(url(), m_fileManager), m_fileManager);
}

}  // namespace tidemark::bench
