#include "SampleHome.h"

#include "Clock.h"
#include "JournalStore.h"
#include "LinuxFileManager.h"
#include "NewFolder.h"
#include "SampleFiles.h"
#include "SampleJournal.h"
#include "SettingsStore.h"

#include <filesystem>

namespace tidemark::bench {

namespace {

/// With files that no rule wants yet.
void fill(const FileURL& folder)
{
    constexpr std::size_t files = 300;
    constexpr std::size_t subfolders = 100;
    std::filesystem::create_directories(folder.path());
    for (std::size_t index = 0; index < files; ++index)
        SampleFiles::make(
            folder, "Quarterly report " + std::to_string(index) + ".pdf", index, files);
    for (std::size_t index = 0; index < subfolders; ++index)
        std::filesystem::create_directory(
            folder.appending("Project " + std::to_string(index)).path());
}

}  // namespace

SampleHome::SampleHome(const Place& place, std::size_t journalEntries)
    : m_home(place.folder->url().appending("home of somebody", FileURL::Kind::directory))
{
    std::filesystem::remove_all(m_home.path());
    Settings settings{.hasOnboarded = true};
    for (const char* name : {"Desktop", "Downloads"}) {
        fill(folder(name));
        settings.folders.push_back(newWatchedFolder(folder(name).path()));
    }
    const FileURL support = folder("Tidemark");
    std::filesystem::create_directories(support.path());
    LinuxFileManager fileManager;
    const SystemClock clock;
    SettingsStore(support.appending("settings.json"), fileManager, clock).save(settings);
    if (journalEntries > 0)
        JournalStore(support.appending("journal.json"), fileManager)
            .save(SampleJournal::make(journalEntries));
    place.flush();
}

std::vector<std::string> SampleHome::environment() const
{
    return {"HOME=" + m_home.path(), "XDG_DATA_HOME=" + m_home.path()};
}

void SampleHome::addNote() const
{
    constexpr std::size_t someNote = 42;
    SampleFiles::make(folder("Desktop"), SampleFiles::name(someNote), someNote, 1);
}

FileURL SampleHome::folder(std::string_view name) const
{
    return m_home.appending(name, FileURL::Kind::directory);
}

}  // namespace tidemark::bench
