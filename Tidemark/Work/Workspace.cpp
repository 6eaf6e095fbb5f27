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

}  // namespace

Workspace::Workspace(const FileURL& supportFolder, FileManager& fileManager, const Clock& clock)
    : m_fileManager(fileManager)
    , m_clock(clock)
    , m_supportFolder(requireNoOtherFile(supportFolder, fileManager))
    , m_journalURL(supportFolder.appending(journalName))
    , m_failures(supportFolder.appending(failureName), fileManager)
    , m_controller(SettingsStore{supportFolder.appending(settingsName), fileManager, clock},
          JournalStore{m_journalURL, fileManager}, fileManager)
{
}

std::optional<std::string> Workspace::settingsProblem() const
{
    const std::exception_ptr failure = m_controller.settingsError();
    if (failure == nullptr)
        return std::nullopt;
    return failureText(failure);
}

void Workspace::requireReadableSettings() const
{
    if (const auto problem = settingsProblem())
        throw CommandFailure{*problem};
}

std::optional<ReplacedSettings> Workspace::changeSettings(
    const std::function<void(Settings&)>& change)
{
    Settings settings = m_controller.settings();
    change(settings);
    const std::optional<std::string> problem = settingsProblem();
    if (!problem) {
        m_controller.update(std::move(settings));
        return std::nullopt;
    }
    const std::vector<std::string> before = keptSettingsFiles();
    m_controller.update(std::move(settings));
    for (const std::string& name : keptSettingsFiles()) {
        if (std::ranges::find(before, name) == before.end())
            return ReplacedSettings{*problem, m_supportFolder.appending(name).path()};
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
