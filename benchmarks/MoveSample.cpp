#include "MoveSample.h"

#include "Clock.h"
#include "SampleFiles.h"
#include "SettingsStore.h"

#include <stdexcept>

namespace tidemark::bench {

namespace {

FileURL makeFolder(const Place& place, const std::string& name, std::string_view part)
{
    const FileURL root = place.folder->url().appending(name, FileURL::Kind::directory);
    FileURL folder = root.appending(part, FileURL::Kind::directory);
    std::filesystem::create_directories(folder.path());
    return folder;
}

/// In the order in which a sweep takes them, which is that of their numbers.
std::vector<std::string> numberedNames(std::size_t count)
{
    std::vector<std::string> names;
    for (std::size_t index = 0; index < count; ++index)
        names.push_back("Quarterly report " + std::to_string(100'000 + index) + ".pdf");
    return names;
}

}  // namespace

MoveSample::MoveSample(Place place, const std::string& name, std::size_t files, Journal before)
    : m_place(std::move(place))
    , m_from(makeFolder(m_place, name, "Downloads"))
    , m_to(makeFolder(m_place, name, "Archive"))
    , m_support(makeFolder(m_place, name, "support"))
    , m_names(numberedNames(files))
    , m_before(std::move(before))
    , m_replay(makeReplay())
{
    for (std::size_t index = 0; index < count(); ++index)
        SampleFiles::make(m_from, m_names[index], index, count());
    writeSettings();
}

void MoveSample::reset()
{
    for (std::size_t index = 0; index < count(); ++index) {
        if (std::filesystem::exists(destination(index).path()))
            std::filesystem::rename(destination(index).path(), source(index).path());
    }
    if (m_before.sweeps.empty())
        std::filesystem::remove(journalURL().path());
    else
        JournalStore(journalURL(), m_fileManager).save(m_before);
    m_place.flush();
}

SweepPlan MoveSample::plan(std::size_t count) const
{
    SweepPlan plan;
    for (std::size_t index = 0; index < count; ++index) {
        plan.actions.push_back({.source = source(index),
            .ruleID = {},
            .ruleName = "File everything",
            .action = SweepAction::move(m_to),
            .stampCreated = std::nullopt});
    }
    return plan;
}

void MoveSample::requireJournalAfter(std::size_t count) const
{
    if (std::filesystem::file_size(journalURL().path()) != m_replay.sizeAfter(count))
        throw std::logic_error("the journal is not the one that the yardstick writes");
}

void MoveSample::writeSettings()
{
    const SystemClock clock;
    const Rule everything{.name = "File everything",
        .match = {},
        .action = RuleAction::fixed(SweepAction::move(m_to))};
    const WatchedFolder folder{
        .path = m_from.path(), .rules = {everything}, .sortsMarkdown = false};
    SettingsStore(settingsURL(), m_fileManager, clock).save({.folders = {folder}});
}

JournalReplay MoveSample::makeReplay() const
{
    const Date now = SystemClock().now();
    SweepRecord sweep{.startedAt = now};
    for (std::size_t index = 0; index < count(); ++index) {
        sweep.entries.push_back(
            JournalEntry::between(JournalEntry::Op::move, source(index), destination(index), now));
    }
    Journal after = m_before;
    after.sweeps.push_back(std::move(sweep));
    return JournalReplay(after);
}

}  // namespace tidemark::bench
