#include "Workspace.h"

#include "CommandFailure.h"
#include "FailureText.h"
#include "SystemCall.h"

#include <algorithm>

namespace tidemark {

namespace {

constexpr std::string_view settingsName = "settings.json";
constexpr std::string_view journalName = "journal.json";
constexpr std::string_view failureName = "last-failure.json";

/// Without this check a file in the folder's place would look like an empty folder.
const FileURL& requireNoOtherFile(const FileURL& supportFolder, FileManager& fileManager)
{
    if (fileManager.fileExists(supportFolder) && !fileManager.directoryExists(supportFolder))
        fail("cannot use the support folder", supportFolder, ENOTDIR);
    return supportFolder;
}

/// In plain words what `controller` tells of the settings.
std::optional<std::string> problemOf(const SweepController& controller)
{
    if (!controller.settingsError())
        return std::nullopt;
    try {
        std::rethrow_exception(controller.settingsError());
    } catch (const std::exception& error) {
        return failureText(error);
    }
}

}  // namespace

Workspace::Workspace(const FileURL& supportFolder)
    : m_supportFolder(requireNoOtherFile(supportFolder, m_fileManager))
    , m_settings(m_supportFolder.appending(settingsName), m_fileManager, m_clock)
    , m_failures(m_supportFolder.appending(failureName), m_fileManager)
    , m_controller(m_settings, JournalStore{m_supportFolder.appending(journalName), m_fileManager},
          m_fileManager)
    , m_settingsProblem(problemOf(m_controller))
{
}

void Workspace::requireReadableSettings() const
{
    if (m_settingsProblem)
        throw CommandFailure{*m_settingsProblem};
}

std::optional<Workspace::ReplacedSettings> Workspace::changeSettings(
    const std::function<void(Settings&)>& change)
{
    Settings settings = m_controller.settings();
    change(settings);
    if (!m_settingsProblem) {
        m_controller.update(std::move(settings));
        return std::nullopt;
    }
    const std::vector<std::string> before = keptSettingsFiles();
    m_controller.update(std::move(settings));
    for (const std::string& name : keptSettingsFiles()) {
        if (std::ranges::find(before, name) == before.end())
            return ReplacedSettings{*m_settingsProblem, m_supportFolder.appending(name).path()};
    }
    return std::nullopt;
}

std::vector<std::string> Workspace::keptSettingsFiles()
{
    std::vector<std::string> names;
    for (DirectoryEntry& entry : m_fileManager.contentsOfDirectory(m_supportFolder)) {
        if (entry.name.starts_with(std::string{settingsName} + ".unreadable-"))
            names.push_back(std::move(entry.name));
    }
    return names;
}

}  // namespace tidemark
