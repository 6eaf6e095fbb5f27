#pragma once

#include "Clock.h"
#include "LinuxFileManager.h"
#include "SweepController.h"
#include "SweepFailureStore.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// Everything a command works with, built for one support folder.
///
/// Making it reads the settings and changes nothing. Whoever changes anything through it has taken the
/// SupportLock before making it. For one thread.
class Workspace {
public:
    /// A settings file that could not be read and was kept beside the new one.
    struct ReplacedSettings {
        std::string problem;
        std::string keptAs;  ///< The path it has now.
    };

    /// Throws filesystem_error when something else than a folder stands at `supportFolder`.
    explicit Workspace(const FileURL& supportFolder);

    SweepController& controller() { return m_controller; }
    FileManager& fileManager() { return m_fileManager; }
    const FileURL& supportFolder() const { return m_supportFolder; }
    const SweepFailureStore& failures() const { return m_failures; }
    Date now() const { return m_clock.now(); }

    /// Why the settings file could not be read; nothing when all is well.
    std::optional<std::string> settingsProblem() const { return m_settingsProblem; }

    /// Throws CommandFailure with that reason.
    void requireReadableSettings() const;

    /// Changes the settings and saves them, also over a file that cannot be read, which is kept. Throws
    /// what SettingsStore::save throws.
    std::optional<ReplacedSettings> changeSettings(const std::function<void(Settings&)>& change);

private:
    std::vector<std::string> keptSettingsFiles();

    LinuxFileManager m_fileManager;
    FileURL m_supportFolder;
    SystemClock m_clock;
    SettingsStore m_settings;
    SweepFailureStore m_failures;
    SweepController m_controller;
    std::optional<std::string> m_settingsProblem;
};

}  // namespace tidemark
