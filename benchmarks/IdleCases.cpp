#include "Cases.h"

#include "Clock.h"
#include "Interruption.h"
#include "JournalStore.h"
#include "LinuxFileManager.h"
#include "NewFolder.h"
#include "ProgramCopies.h"
#include "SampleFiles.h"
#include "SampleJournal.h"
#include "SettingsStore.h"
#include "Stopwatch.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace tidemark::bench {

namespace {

using Programs = Lazy<ProgramCopies>;

constexpr std::size_t largeJournal = 100'000;
constexpr std::size_t filesInAFolder = 300;
constexpr std::size_t subfoldersInAFolder = 100;
constexpr std::size_t foldersInATree = 100'000;

FileURL folderIn(const FileURL& folder, std::string_view name)
{
    return folder.appending(name, FileURL::Kind::directory);
}

void sleep(std::chrono::milliseconds time)
{
    std::this_thread::sleep_for(time);
    if (Interruption::hasCome())
        throw std::runtime_error("interrupted");
}

/// Waits until it has not been woken for a while. One that never rests is measured as it is.
void settle(const RunningProcess& process)
{
    constexpr std::chrono::milliseconds look{100};
    constexpr int quietLooks = 20;
    constexpr int looks = 300;
    auto before = ContextSwitches::of(process.id());
    for (int count = 0, quiet = 0; count < looks && quiet < quietLooks; ++count) {
        sleep(look);
        auto now = ContextSwitches::of(process.id());
        quiet = now.since(before) == 0 ? quiet + 1 : 0;
        before = std::move(now);
    }
}

Idleness measureAtRest(const RunningProcess& process, Seconds rest)
{
    settle(process);
    const auto before = ContextSwitches::of(process.id());
    const Stopwatch stopwatch;
    while (stopwatch.elapsed().wall < rest)
        sleep(std::chrono::milliseconds{100});
    const std::uint64_t wakeUps = ContextSwitches::of(process.id()).since(before);
    return {.rest = stopwatch.elapsed().wall,
        .wakeUps = wakeUps,
        .memory = ProcessMemory::of(process.id())};
}

Idleness restEmptyProgram(const ProgramCopies& programs, Seconds rest)
{
    const auto process = programs.start(TIDEMARK_BENCH_EMPTY_PROGRAM, {}, {});
    process->waitForLine("ready");
    return measureAtRest(*process, rest);
}

/// A home folder of somebody who has `tidemarkctl watch` running.
class SampleHome {
public:
    /// Makes it anew in `place`. Throws filesystem_error.
    SampleHome(const Place& place, std::size_t journalEntries)
        : m_home(folderIn(place.folder->url(), "home of somebody"))
    {
        std::filesystem::remove_all(m_home.path());
        std::filesystem::create_directories(support().path());
        Settings settings{.hasOnboarded = true};
        for (const char* name : {"Desktop", "Downloads"}) {
            fill(folderIn(m_home, name));
            settings.folders.push_back(newWatchedFolder(folderIn(m_home, name).path()));
        }
        LinuxFileManager fileManager;
        const SystemClock clock;
        SettingsStore(support().appending("settings.json"), fileManager, clock).save(settings);
        if (journalEntries > 0)
            JournalStore(support().appending("journal.json"), fileManager)
                .save(SampleJournal::make(journalEntries));
        place.flush();
    }

    std::unique_ptr<RunningProcess> watch(const ProgramCopies& programs) const
    {
        auto process = programs.start(TIDEMARKCTL_PROGRAM, {"--support", support().path(), "watch"},
            {"HOME=" + m_home.path()});
        process->waitForLine("Stop with");
        return process;
    }

    /// Has a file appear that a rule files at once.
    void addNote() const
    {
        constexpr std::size_t someNote = 42;
        SampleFiles::make(folderIn(m_home, "Desktop"), SampleFiles::name(someNote), someNote, 1);
    }

private:
    FileURL support() const { return folderIn(m_home, "support"); }

    /// With files that no rule wants yet.
    static void fill(const FileURL& folder)
    {
        std::filesystem::create_directories(folder.path());
        for (std::size_t index = 0; index < filesInAFolder; ++index)
            SampleFiles::make(folder, "Quarterly report " + std::to_string(index) + ".pdf", index,
                filesInAFolder);
        for (std::size_t index = 0; index < subfoldersInAFolder; ++index)
            std::filesystem::create_directory(
                folderIn(folder, "Project " + std::to_string(index)).path());
    }

    FileURL m_home;
};

Idleness restAfterStart(
    const Place& place, const ProgramCopies& programs, std::size_t journal, Seconds rest)
{
    const SampleHome home(place, journal);
    const auto process = home.watch(programs);
    return measureAtRest(*process, rest);
}

Idleness restAfterSweep(
    const Place& place, const ProgramCopies& programs, std::size_t journal, Seconds rest)
{
    const SampleHome home(place, journal);
    const auto process = home.watch(programs);
    home.addNote();
    process->waitForLine("Filed");
    return measureAtRest(*process, rest);
}

void makeTree(const FileURL& root)
{
    constexpr std::size_t inEach = 100;
    for (std::size_t made = 0; made < foldersInATree; made += inEach) {
        const FileURL parent = folderIn(root, "Project " + std::to_string(made / inEach));
        std::filesystem::create_directories(parent.path());
        for (std::size_t index = 1; index < inEach; ++index)
            std::filesystem::create_directory(
                folderIn(parent, "Part " + std::to_string(index)).path());
    }
}

/// The watcher alone, which says when it knows all folders.
Idleness restWatchingATree(const Place& place, const ProgramCopies& programs, Seconds rest)
{
    const FileURL root = folderIn(place.folder->url(), "tree");
    makeTree(root);
    const auto process = programs.start(TIDEMARK_BENCH_TREE_PROGRAM, {root.path()}, {});
    const std::string line = process->waitForLine("seconds");
    Idleness idleness = measureAtRest(*process, rest);
    idleness.preparation = Seconds(std::stod(line));
    return idleness;
}

}  // namespace

void addIdleCases(const std::vector<Place>& places, Seconds rest, Suite& suite)
{
    const Place place = places.front();
    const Programs programs([=] {
        return std::make_unique<ProgramCopies>(place,
            std::vector<std::string>{
                TIDEMARKCTL_PROGRAM, TIDEMARK_BENCH_EMPTY_PROGRAM, TIDEMARK_BENCH_TREE_PROGRAM});
    });
    const Lazy<Idleness> empty(
        [=] { return std::make_unique<Idleness>(restEmptyProgram(programs.get(), rest)); });
    for (const std::size_t journal : {std::size_t{0}, largeJournal}) {
        suite.add(IdleCase(
            {.work = "watch, started", .size = journal, .place = place.name},
            [=] { return restAfterStart(place, programs.get(), journal, rest); }, empty));
        suite.add(IdleCase(
            {.work = "watch, has swept", .size = journal, .place = place.name},
            [=] { return restAfterSweep(place, programs.get(), journal, rest); }, empty));
    }
    // So many folders are made fastest in memory, and knowing them costs the same anywhere.
    const Place fastest = places.back();
    suite.add(IdleCase(
        {.work = "watcher of many folders",
            .size = foldersInATree,
            .place = fastest.name,
            .hasBars = false},
        [=] { return restWatchingATree(fastest, programs.get(), rest); }, empty));
}

}  // namespace tidemark::bench
