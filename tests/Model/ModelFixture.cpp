#include "ModelFixture.h"

#include "JSONCoders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cmath>

namespace tidemark {

namespace {

const Date present{Seconds{1'800'000'000}};

timespec timeOf(Date date)
{
    const double seconds = date.time_since_epoch().count();
    return {.tv_sec = static_cast<time_t>(std::floor(seconds)),
        .tv_nsec = static_cast<long>((seconds - std::floor(seconds)) * 1e9)};
}

}  // namespace

ModelTest::ModelTest()
    : m_clock(present)
{
    requireApplication();
}

void ModelTest::writeSettings(const Settings& settings) const
{
    m_home.write("support/settings.json", JSONCoders::encode(settings));
}

void ModelTest::writeJournal(const Journal& journal) const
{
    m_home.write("support/journal.json", JSONCoders::encode(journal));
}

Settings ModelTest::watching(
    const std::vector<std::string>& folders, const std::vector<Rule>& rules) const
{
    Settings settings{.gracePeriod = Seconds{0}};
    for (const std::string& folder : folders)
        settings.folders.push_back(
            {.path = m_home.makeFolder(folder).path(), .rules = rules, .sortsMarkdown = false});
    return settings;
}

Rule ModelTest::filingPapers() const
{
    return {.name = "File papers",
        .match = {.fileTypes = {"pdf"}},
        .action = RuleAction::fixed(SweepAction::move(FileURL::directory(m_home.path("Filed"))))};
}

FileURL ModelTest::addFile(const std::string& path, Seconds age) const
{
    FileURL url = m_home.write(path, "content of " + path);
    const timespec time = timeOf(m_clock.now() - age);
    const std::array<timespec, 2> times{time, time};
    EXPECT_EQ(::utimensat(AT_FDCWD, url.path().c_str(), times.data(), 0), 0);
    return url;
}

AppModel& ModelTest::start(AppModel::Initiative initiative)
{
    m_model.reset();
    m_workspace = std::make_unique<Workspace>(m_home.url("support"), m_files, m_clock);
    m_model = std::make_unique<AppModel>(*m_workspace,
        AppModel::Services{.folderChooser = m_chooser,
            .alarm = m_alarm,
            .log = m_log,
            .time = m_time,
            .ownChanges = m_ownChanges,
            .updates = m_updateServices},
        AppModel::Options{
            .initiative = initiative, .looksAtLaunch = m_looksAtLaunch, .watchBackend = m_backend});
    QObject::connect(m_model.get(), &AppModel::swept, m_model.get(), [this] { ++m_sweeps; });
    finishWork();
    m_sweeps = 0;
    return *m_model;
}

void ModelTest::finishWork()
{
    // Work is done in order, and what it posts arrives in order.
    // Twice, since what is done may ask for more.
    for (int round = 0; round < 2; ++round) {
        bool isDone = false;
        m_model->whenIdle([&] { isDone = true; });
        EXPECT_TRUE(runUntil([&] { return isDone; }));
    }
}

int ModelTest::sweeps()
{
    finishWork();
    return std::exchange(m_sweeps, 0);
}

std::vector<std::string> ModelTest::filed() const
{
    return m_home.holds("Filed") ? m_home.names("Filed") : std::vector<std::string>{};
}

Settings ModelTest::savedSettings() const
{
    return JSONCoders::decode<Settings>(m_home.read("support/settings.json"), "settings.json");
}

}  // namespace tidemark
