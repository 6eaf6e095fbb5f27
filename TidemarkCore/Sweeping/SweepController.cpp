#include "SweepController.h"

#include "DefaultRules.h"

#include <QDebug>

#include <stdexcept>

namespace tidemark {

SweepController::SweepController(
    SettingsStore settingsStore, JournalStore journalStore, FileManager& fileManager)
    : m_settingsStore(std::move(settingsStore))
    , m_executor(journalStore, fileManager)
    , m_engine(m_executor, fileManager)
    , m_journalReader(std::move(journalStore), fileManager)
{
    try {
        m_settings = m_settingsStore.load();
    } catch (const std::runtime_error& error) {
        m_settingsError = error.what();
    }
}

bool SweepController::canUndo()
{
    try {
        return !m_journalReader.read()->sweeps.empty();
    } catch (const std::runtime_error&) {
        return false;
    }
}

SweepRecord SweepController::sweepNow(Date now, SweepObserver* observer)
{
    return sweep(m_settings, now, observer);
}

SweepRecord SweepController::sweep(const Settings& settings, Date now, SweepObserver* observer)
{
    if (settings.isPaused)
        return {.startedAt = now, .entries = {}};
    return m_engine.sweep(effectiveFolders(settings), settings.gracePeriod, now, now, observer);
}

Rehearsal SweepController::preview(Date now, SweepObserver* observer)
{
    return m_engine.rehearse(effectiveFolders(m_settings), m_settings.gracePeriod, now, observer);
}

std::optional<Date> SweepController::nextSweepDue(
    const Settings& settings, Date now, SweepObserver* observer)
{
    if (settings.isPaused)
        return std::nullopt;
    return m_engine.nextSweepDue(effectiveFolders(settings), settings.gracePeriod, now, observer);
}

std::optional<SweepRecord> SweepController::undoLast(Date now, UndoObserver* observer)
{
    return m_executor.undoLastSweep(now, observer);
}

void SweepController::setPaused(bool value)
{
    m_settings.isPaused = value;
    m_settingsStore.save(m_settings);
}

void SweepController::togglePause()
{
    setPaused(!m_settings.isPaused);
}

void SweepController::update(Settings settings)
{
    m_settings = std::move(settings);
    m_settingsStore.save(m_settings);
}

std::vector<ActivityItem> SweepController::recentActivity(int limit)
{
    if (limit < 0)
        qFatal("recentActivity: the limit is negative");
    const auto journal = m_journalReader.read();
    std::vector<ActivityItem> items;
    for (std::size_t sweep = journal->sweeps.size(); sweep-- > 0;) {
        const std::vector<JournalEntry>& entries = journal->sweeps[sweep].entries;
        for (std::size_t entry = entries.size(); entry-- > 0;) {
            if (items.size() == static_cast<std::size_t>(limit))
                return items;
            items.push_back(ActivityItem::of(entries[entry]));
        }
    }
    return items;
}

std::vector<WatchedFolder> SweepController::effectiveFolders(const Settings& settings)
{
    std::vector<WatchedFolder> folders = settings.folders;
    if (settings.markdownSubfolder.empty())
        return folders;
    for (WatchedFolder& folder : folders) {
        if (!folder.sortsMarkdown)
            continue;
        FileURL notes = FileURL::directory(folder.path)
                            .appending(settings.markdownSubfolder, FileURL::Kind::directory);
        folder.rules.insert(folder.rules.begin(), DefaultRules::markdown(std::move(notes)));
    }
    return folders;
}

}  // namespace tidemark
