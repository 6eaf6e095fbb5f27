#include "SampleFolder.h"

#include "Clock.h"
#include "DefaultRules.h"
#include "LinuxFileManager.h"
#include "RuleAction.h"
#include "SampleFiles.h"
#include "SettingsStore.h"

namespace tidemark::bench {

namespace {

FileURL folderIn(const FileURL& folder, std::string_view name)
{
    return folder.appending(name, FileURL::Kind::directory);
}

FileURL screenshotsIn(const FileURL& destinations)
{
    return folderIn(destinations, "Screenshots");
}

FileURL archiveIn(const FileURL& destinations)
{
    return folderIn(destinations, "Archive");
}

/// Files are archived by the month in which they came, which is this one.
void makeDestinations(const FileURL& destinations)
{
    const std::string month = monthFolder(SystemClock().now(), TimeZone::current());
    std::filesystem::create_directories(screenshotsIn(destinations).path());
    std::filesystem::create_directories(archiveIn(destinations).appending(month).path());
}

}  // namespace

SampleFolder::SampleFolder(const Place& place, std::size_t files)
    : m_root(folderIn(place.folder->url(), "folder of " + std::to_string(files)))
    , m_files(folderIn(m_root, "Downloads"))
{
    std::filesystem::create_directories(m_files.path());
    makeFiles(files);
    const FileURL existing = folderIn(m_root, "existing");
    makeDestinations(existing);
    writeSettings(supportBeforeFirstSweep(), folderIn(m_root, "missing"));
    writeSettings(supportLater(), existing);
    place.flush();
}

FileURL SampleFolder::supportBeforeFirstSweep() const
{
    return folderIn(m_root, "support before");
}

FileURL SampleFolder::supportLater() const
{
    return folderIn(m_root, "support later");
}

Date SampleFolder::sweepDate()
{
    constexpr double longerThanAnyRuleWaits = 40;
    return SystemClock().now() + Seconds(longerThanAnyRuleWaits * secondsPerDay);
}

void SampleFolder::makeFiles(std::size_t count) const
{
    for (std::size_t index = 0; index < count; ++index)
        SampleFiles::make(m_files, SampleFiles::name(index), index, count);
}

void SampleFolder::writeSettings(const FileURL& support, const FileURL& destinations) const
{
    LinuxFileManager fileManager;
    const SystemClock clock;
    const WatchedFolder folder{.path = m_files.path(),
        .rules = DefaultRules::all(screenshotsIn(destinations), archiveIn(destinations)),
        .sortsMarkdown = true};
    SettingsStore(support.appending("settings.json"), fileManager, clock)
        .save({.folders = {folder}});
}

}  // namespace tidemark::bench
