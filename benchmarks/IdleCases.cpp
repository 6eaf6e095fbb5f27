#include "Cases.h"

#include "AtRest.h"
#include "ProgramCopies.h"
#include "SampleHome.h"

#include <filesystem>

namespace tidemark::bench {

namespace {

using Programs = Lazy<ProgramCopies>;

constexpr std::size_t largeJournal = 100'000;
constexpr std::size_t residentBar = std::size_t{16} << 20U;
constexpr std::size_t foldersInATree = 100'000;

Idleness restEmptyProgram(const ProgramCopies& programs, Seconds rest)
{
    const auto process = programs.start(TIDEMARK_BENCH_EMPTY_PROGRAM, {}, {});
    process->waitForLine("ready");
    return measureAtRest(*process, rest);
}

std::unique_ptr<RunningProcess> watch(const ProgramCopies& programs, const SampleHome& home)
{
    auto process = programs.start(TIDEMARKCTL_PROGRAM, {"watch"}, home.environment());
    process->waitForLine("Stop with");
    return process;
}

Idleness restAfterStart(
    const Place& place, const ProgramCopies& programs, std::size_t journal, Seconds rest)
{
    const SampleHome home(place, journal);
    const auto process = watch(programs, home);
    return measureAtRest(*process, rest);
}

Idleness restAfterSweep(
    const Place& place, const ProgramCopies& programs, std::size_t journal, Seconds rest)
{
    const SampleHome home(place, journal);
    const auto process = watch(programs, home);
    home.addNote();
    process->waitForLine("Filed");
    return measureAtRest(*process, rest);
}

void makeTree(const FileURL& root)
{
    constexpr std::size_t inEach = 100;
    for (std::size_t made = 0; made < foldersInATree; made += inEach) {
        const FileURL parent =
            root.appending("Project " + std::to_string(made / inEach), FileURL::Kind::directory);
        std::filesystem::create_directories(parent.path());
        for (std::size_t index = 1; index < inEach; ++index)
            std::filesystem::create_directory(
                parent.appending("Part " + std::to_string(index)).path());
    }
}

/// The watcher alone, which says when it knows all folders.
Idleness restWatchingATree(const Place& place, const ProgramCopies& programs, Seconds rest)
{
    const FileURL root = place.folder->url().appending("tree", FileURL::Kind::directory);
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
    const Place& place = places.front();
    const Programs programs([=] {
        return std::make_unique<ProgramCopies>(place,
            std::vector<std::string>{
                TIDEMARKCTL_PROGRAM, TIDEMARK_BENCH_EMPTY_PROGRAM, TIDEMARK_BENCH_TREE_PROGRAM});
    });
    const Lazy<Idleness> empty(
        [=] { return std::make_unique<Idleness>(restEmptyProgram(programs.get(), rest)); });
    for (const std::size_t journal : {std::size_t{0}, largeJournal}) {
        suite.add(IdleCase(
            {.work = "watch, started",
                .size = journal,
                .place = place.name,
                .residentBar = residentBar},
            [=] { return restAfterStart(place, programs.get(), journal, rest); }, empty));
        suite.add(IdleCase(
            {.work = "watch, has swept",
                .size = journal,
                .place = place.name,
                .residentBar = residentBar},
            [=] { return restAfterSweep(place, programs.get(), journal, rest); }, empty));
    }
    // So many folders are made fastest in memory, and knowing them costs the same anywhere.
    const Place& fastest = places.back();
    suite.add(IdleCase(
        {.work = "watcher of many folders", .size = foldersInATree, .place = fastest.name},
        [=] { return restWatchingATree(fastest, programs.get(), rest); }, empty));
}

}  // namespace tidemark::bench
