#include "Cases.h"
#include "Interruption.h"
#include "Options.h"
#include "Place.h"
#include "ProgressReporter.h"
#include "Report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace tidemark::bench {

namespace {

/// Nothing that is measured may meet the user's own files.
void redirectHome(const FileURL& home)
{
    const auto redirect = [&](const char* variable, const char* folder) {
        const FileURL url = home.appending(folder, FileURL::Kind::directory);
        std::filesystem::create_directories(url.path());
        ::setenv(variable, url.path().c_str(), 1);
    };
    ::setenv("HOME", home.path().c_str(), 1);
    redirect("XDG_DATA_HOME", "data");
    redirect("XDG_CONFIG_HOME", "config");
    redirect("XDG_CACHE_HOME", "cache");
    redirect("XDG_STATE_HOME", "state");
    redirect("XDG_RUNTIME_DIR", "run");
}

std::vector<Place> placesFor(const FileURL& folder)
{
    std::vector<Place> places{Place::in(folder)};
    if (places.front().isInMemory())
        std::cerr << folder.path() << " is a tmpfs itself: no other disk is measured\n";
    else if (const auto memory = Place::inMemory())
        places.push_back(*memory);
    else
        std::cerr << "no tmpfs at /dev/shm that can be written to: the disk alone is measured\n";
    return places;
}

void addCases(const std::vector<Place>& places, const Options& options, Suite& suite)
{
    for (const Place& place : places)
        addPreviewCases(place, suite);
    for (const Place& place : places)
        addSweepCases(place, suite);
    for (const Place& place : places)
        addJournalCases(place, suite);
    addModelCases(places, suite);
    addIdleCases(places, options.rest, suite);
    addDesktopCases(places.front(), options.rest, suite);
    // These read a file that is in memory on any disk.
    addActivityCases(places.front(), suite);
    addCodingCases();
    addPlanningCases();
}

void initializeGoogleBenchmark(std::vector<std::string> arguments)
{
    std::vector<char*> pointers;
    std::ranges::transform(
        arguments, std::back_inserter(pointers), [](std::string& each) { return each.data(); });
    int count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    benchmark::Initialize(&count, pointers.data(), Options::printHelp);
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()))
        throw std::invalid_argument("see --help");
}

int run(int count, char** arguments)
{
    const Options options = Options::parse(count, arguments);
    initializeGoogleBenchmark(options.others);
    Interruption::install();

    const std::vector<Place> places = placesFor(options.folder);
    redirectHome(places.front().folder->url().appending("home", FileURL::Kind::directory));
    Suite suite;
    addCases(places, options, suite);

    ProgressReporter reporter(suite);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    Report::print(suite, reporter.absoluteResults(), std::cout);
    benchmark::ClearRegisteredBenchmarks();
    return reporter.hasFailed() ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace

}  // namespace tidemark::bench

int main(int argc, char* argv[])
{
    try {
        return tidemark::bench::run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "tidemark-bench: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
