#pragma once

#include "ActivityItem.h"
#include "Executor.h"
#include "JournalReader.h"
#include "JournalStore.h"
#include "Rehearsal.h"
#include "Settings.h"
#include "SettingsStore.h"
#include "SweepEngine.h"

#include <exception>
#include <optional>
#include <vector>

namespace tidemark {

/// The one object through which an application reaches the core: the current settings, sweeping, undo and
/// what was done lately.
///
/// Settings belong to one thread, the main one: reading and changing them, and what uses the current ones
/// (`sweepNow`, `preview`). `sweep`, `nextSweepDue` and `undoLast` follow one another on one thread, which may
/// be another one. `canUndo`, `recentActivity` and `hasCurrentJournal` are safe from any thread. None needs to
/// wait for another: a sweep works on the settings that it is given, and each save of the journal replaces
/// it whole.
class SweepController {
public:
    /// Loads the settings; those that cannot be read are replaced by the defaults in memory, and
    /// `settingsError` tells why. `fileManager` outlives the controller.
    SweepController(
        SettingsStore settingsStore, JournalStore journalStore, FileManager& fileManager);

    const Settings& settings() const { return m_settings; }
    bool isPaused() const { return m_settings.isPaused; }

    /// Why the settings file could not be read when the controller was made; null when all is well, also
    /// after the settings have been saved.
    std::exception_ptr settingsError() const { return m_settingsError; }

    /// Whether the journal holds a sweep, as its file is now; false when it cannot be read.
    bool canUndo();

    /// The same, but throws what JournalStore::load throws.
    bool hasSweepToUndo();

    /// Whether `canUndo`, and `recentActivity` for up to 20 entries, answer now without decoding the journal,
    /// which takes long for a large one: JournalReader::isCurrent.
    bool hasCurrentJournal() const;

    /// Sweeps with the current settings. While paused the result is an empty record and nothing is touched.
    /// Throws what SweepEngine::sweep throws.
    SweepRecord sweepNow(Date now, SweepObserver* observer = nullptr);

    /// The same with other settings, which are not kept.
    SweepRecord sweep(const Settings& settings, Date now, SweepObserver* observer = nullptr);

    /// What a sweep would do, whether or not sweeping is paused; changes nothing. Throws what the scan of
    /// any folder throws.
    Rehearsal preview(Date now, SweepObserver* observer = nullptr);

    /// When to sweep next with these settings: SweepEngine::nextSweepDue; nothing while they say paused.
    std::optional<Date> nextSweepDue(
        const Settings& settings, Date now, SweepObserver* observer = nullptr);

    /// Executor::undoLastSweep.
    std::optional<SweepRecord> undoLast(Date now, UndoObserver* observer = nullptr);

    /// These change the settings in memory, then save them. Throw what SettingsStore::save throws; the
    /// change in memory stands even then.
    void setPaused(bool value);
    void togglePause();
    void update(Settings settings);

    /// Loads the settings again if another program, an editor say, has written their file since they were
    /// loaded or saved here. Settings that cannot be read now change nothing, but `settingsError` tells why
    /// until that is mended; neither does a file that is gone. Whether the settings are others now.
    bool takeInOtherChanges();

    /// The newest entries of the journal, newest first; none without a journal. A negative
    /// `limit` is a mistake in the program and ends the process. Throws what JournalStore::load throws. Above
    /// 20 the journal is decoded each time.
    std::vector<ActivityItem> recentActivity(int limit);

    /// The folders as a sweep sees them: the rule for Markdown notes in front of each folder's own rules
    /// where the folder sorts them, unless the name of the notes' subfolder is empty.
    static std::vector<WatchedFolder> effectiveFolders(const Settings& settings);

private:
    void saveSettings();
    void loadSettings();
    std::optional<FileIdentity> identityOfSettings() const;
    std::optional<FileIdentity> identityOfSaved() const;

    FileManager* m_fileManager;
    SettingsStore m_settingsStore;
    Executor m_executor;
    SweepEngine m_engine;
    JournalReader m_journalReader;
    Settings m_settings;
    std::exception_ptr m_settingsError;
    std::optional<FileIdentity> m_settingsIdentity;  // of the file when it was loaded or saved
};

}  // namespace tidemark
