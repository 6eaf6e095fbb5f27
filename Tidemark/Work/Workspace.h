#pragma once

#include "Clock.h"
#include "FileManager.h"
#include "ReplacedSettings.h"
#include "SweepController.h"
#include "SweepFailureStore.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// Everything of the core that works on one support folder.
///
/// Making it reads the settings and changes nothing. Whoever changes anything through it has taken the
/// SupportLock before making it. Its threads are the SweepController's.
class Workspace {
public:
    /// Both services outlive it. Throws filesystem_error when something else than a folder stands at
    /// `supportFolder`.
    Workspace(const FileURL& supportFolder, FileManager& fileManager, const Clock& clock);

    SweepController& controller() { return m_controller; }
    const SweepController& controller() const { return m_controller; }
    FileManager& fileManager() { return m_fileManager; }
    const FileURL& supportFolder() const { return m_supportFolder; }
    const SweepFailureStore& failures() const { return m_failures; }
    Date now() const { return m_clock.now(); }

    const FileURL& journalURL() const { return m_journalURL; }

    /// Why the settings file could not be read; nothing when all is well, and once it was replaced.
    std::optional<std::string> settingsProblem() const;

    /// Throws CommandFailure with that reason.
    void requireReadableSettings() const;

    /// Changes the settings and saves them, also over a file that cannot be read, which is kept. Throws
    /// what SettingsStore::save throws.
    std::optional<ReplacedSettings> changeSettings(const std::function<void(Settings&)>& change);

private:
    std::vector<std::string> keptSettingsFiles();

    FileManager& m_fileManager;
    const Clock& m_clock;
    FileURL m_supportFolder;
    FileURL m_journalURL;
    SweepFailureStore m_failures;
    SweepController m_controller;
};

}  // namespace tidemark
