#include "ModelSample.h"

#include "JournalStore.h"
#include "SampleFiles.h"
#include "SettingsStore.h"

#include <filesystem>
#include <stdexcept>

namespace tidemark::bench {

/// A failure ends the measuring; there is nothing to be told later.
class ModelSample::SilentLog final : public SystemLog {
public:
    void warn(const std::string& /*line*/) override { }
};

ModelSample::ModelSample(
    MeasuredLoop& loop, const Place& place, const std::string& name, Journal before)
    : m_loop(loop)
    , m_place(place)
    , m_root(place.folder->url().appending(name, FileURL::Kind::directory))
    , m_before(std::move(before))
    , m_fileManager(&m_ownChanges)
    , m_log(std::make_unique<SilentLog>())
{
}

ModelSample::~ModelSample() = default;

FileURL ModelSample::folder(std::string_view name) const
{
    return m_root.appending(name, FileURL::Kind::directory);
}

void ModelSample::reset()
{
    stop();
    std::filesystem::remove_all(m_root.path());
    for (const char* name : {"Inbox", "Filed", "support"})
        std::filesystem::create_directories(folder(name).path());
    writeSettings();
    if (!m_before.sweeps.empty())
        JournalStore(folder("support").appending("journal.json"), m_fileManager).save(m_before);
    m_place.flush();
}

void ModelSample::writeSettings()
{
    const Rule everything{.name = "File everything",
        .match = {},
        .action = RuleAction::fixed(SweepAction::move(folder("Filed")))};
    const WatchedFolder inbox{
        .path = folder("Inbox").path(), .rules = {everything}, .sortsMarkdown = false};
    SettingsStore(folder("support").appending("settings.json"), m_fileManager, m_clock)
        .save({.folders = {inbox}, .gracePeriod = Seconds{0}, .hasOnboarded = true});
}

void ModelSample::addFiles(std::size_t count)
{
    for (std::size_t index = 0; index < count; ++index)
        SampleFiles::make(folder("Inbox"), "Quarterly report " + std::to_string(m_files++) + ".pdf",
            index, count);
}

AppModel& ModelSample::start()
{
    m_loop.post([this] {
        m_alarm = std::make_unique<WallClockAlarm>();
        m_workspace = std::make_unique<Workspace>(folder("support"), m_fileManager, m_clock);
        m_model = std::make_unique<AppModel>(*m_workspace,
            AppModel::Services{.folderChooser = m_chooser,
                .alarm = *m_alarm,
                .log = *m_log,
                .time = m_time,
                .ownChanges = m_ownChanges},
            AppModel::Options{});
    });
    m_loop.runUntil([this] { return m_model != nullptr; });
    finishWork();
    return *m_model;
}

void ModelSample::stop()
{
    m_model.reset();
    m_workspace.reset();
    m_alarm.reset();
}

void ModelSample::sweep(std::size_t files)
{
    const auto outcome = std::make_shared<std::optional<SweepOutcome>>();
    m_loop.post([this, outcome] {
        m_model->sweep({.done = [outcome](const SweepOutcome& done) { *outcome = done; }});
    });
    m_loop.runUntil([&] { return outcome->has_value(); });
    finishWork();
    const std::optional<SweepReport>& report = (*outcome)->report;
    if (!report || report->record.entries.size() != files)
        throw std::runtime_error("the sweep has not moved what it should");
}

void ModelSample::beginEdit()
{
    // One that differs from the one before, and that leaves files alone which are swept later.
    m_loop.post([this] {
        m_gracePeriod = m_gracePeriod % 100 + 1;
        m_model->setGracePeriodSeconds(m_gracePeriod);
    });
}

void ModelSample::edit()
{
    beginEdit();
    finishWork();
}

void ModelSample::finishWork()
{
    // What is done may ask for more: the journal to be read, the next sweep to be planned.
    for (int round = 0; round < 2; ++round) {
        const auto isDone = std::make_shared<bool>(false);
        m_loop.post([this, isDone] { m_model->whenIdle([isDone] { *isDone = true; }); });
        m_loop.runUntil([&] { return *isDone; });
    }
}

}  // namespace tidemark::bench
