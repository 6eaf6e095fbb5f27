#include "SweepController.h"

#include "DefaultRules.h"

#include <QDebug>

#include <filesystem>
#include <stdexcept>

namespace tidemark {

SweepController::SweepController(
    SettingsStore settingsStore, JournalStore journalStore, FileManager& fileManager)
    : m_fileManager(&fileManager)
    , m_settingsStore(std::move(settingsStore))
    , m_executor(journalStore, fileManager)
    , m_engine(m_executor, fileManager)
    , m_journalReader(std::move(journalStore), fileManager)
{
    loadSettings();
}

void SweepController::loadSettings()
{
    // Taken before reading: a file that changes meanwhile is read again next time.
    m_settingsIdentity = identityOfSettings();
    try {
        m_settings = m_settingsStore.load();
        m_settingsError = nullptr;
    } catch (const std::runtime_error&) {
        m_settingsError = std::current_exception();
    }
}

/// Nothing when there is no file, or none that can be looked up.
std::optional<FileIdentity> SweepController::identityOfSettings() const
{
    try {
        return m_fileManager->identity(m_settingsStore.url());
    } catch (const std::filesystem::filesystem_error&) {
        return std::nullopt;
    }
}

bool SweepController::takeInOtherChanges()
{
    const std::optional<FileIdentity> identity = identityOfSettings();
    if (!identity || identity == m_settingsIdentity)
        return false;
    const Settings before = m_settings;
    loadSettings();
    return m_settings != before;
}

bool SweepController::canUndo()
{
    try {
        return hasSweepToUndo();
    } catch (const std::runtime_error&) {
        return false;
    }
}

bool SweepController::hasSweepToUndo()
{
    return m_journalReader.hasSweep();
}

bool SweepController::hasCurrentJournal() const
{
    return m_journalReader.isCurrent();
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
    saveSettings();
}

void SweepController::togglePause()
{
    setPaused(!m_settings.isPaused);
}

void SweepController::update(Settings settings)
{
    m_settings = std::move(settings);
    saveSettings();
}

void SweepController::saveSettings()
{
    // A file that could not be read may be read now; these settings were not made from it all the same.
    if (m_settingsError != nullptr)
        m_settingsStore.saveOverUnreadable(m_settings);
    else
        m_settingsStore.save(m_settings);
    m_settingsError = nullptr;  // the file is good now
    m_settingsIdentity = identityOfSaved();
}

/// Nothing when another program has written the file since: that is to be loaded, then.
std::optional<FileIdentity> SweepController::identityOfSaved() const
{
    const std::optional<FileIdentity> identity = identityOfSettings();
    try {
        if (m_settingsStore.load() == m_settings)
            return identity;
    } catch (const std::runtime_error&) {
        // It was another program that wrote what cannot be read.
    }
    return std::nullopt;
}

std::vector<ActivityItem> SweepController::recentActivity(int limit)
{
    if (limit < 0)
        qFatal("recentActivity: the limit is negative");
    return m_journalReader.newest(static_cast<std::size_t>(limit));
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
