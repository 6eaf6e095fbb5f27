#include "Cases.h"

#include "Lazy.h"
#include "ModelSample.h"
#include "SampleJournal.h"

#include <string>
#include <vector>

namespace tidemark::bench {

namespace {

using Loop = Lazy<MeasuredLoop>;
using Sample = Lazy<ModelSample>;
using Work = std::vector<Seconds> (*)(ModelSample&);

constexpr std::size_t largeJournal = 100'000;
constexpr std::size_t sweeps = 10;
constexpr std::size_t filesOfASweep = 5;
constexpr std::size_t launches = 10;
constexpr std::size_t edits = 100;
constexpr std::size_t editsDuringASweep = 20;
constexpr std::size_t manyFiles = 10'000;

std::vector<Seconds> launch(ModelSample& sample)
{
    sample.reset();
    std::vector<Seconds> longest;
    for (std::size_t count = 0; count < launches; ++count) {
        sample.stop();
        sample.loop().takeTurns();
        sample.start();
        longest.push_back(sample.loop().takeLongestTurn());
    }
    sample.stop();
    return longest;
}

/// With the refresh after each sweep.
std::vector<Seconds> sweepAgainAndAgain(ModelSample& sample)
{
    sample.reset();
    sample.start();
    std::vector<Seconds> longest;
    for (std::size_t count = 0; count < sweeps; ++count) {
        sample.addFiles(filesOfASweep);
        sample.loop().takeTurns();
        sample.sweep(filesOfASweep);
        longest.push_back(sample.loop().takeLongestTurn());
    }
    sample.stop();
    return longest;
}

std::vector<Seconds> editAgainAndAgain(ModelSample& sample)
{
    sample.reset();
    sample.start();
    std::vector<Seconds> longest;
    for (std::size_t count = 0; count < edits; ++count) {
        sample.loop().takeTurns();
        sample.edit();
        longest.push_back(sample.loop().takeLongestTurn());
    }
    sample.stop();
    return longest;
}

/// While a thread writes the journal and has it read.
std::vector<Seconds> editDuringASweep(ModelSample& sample)
{
    sample.reset();
    AppModel& model = sample.start();
    sample.addFiles(editsDuringASweep);
    std::vector<Seconds> longest;
    QObject::connect(&model, &AppModel::performed, &model, [&] {
        if (!longest.empty())
            longest.back() = sample.loop().takeLongestTurn();
        longest.emplace_back(0);
        sample.beginEdit();
    });
    sample.loop().takeTurns();
    sample.sweep(editsDuringASweep);
    longest.back() = sample.loop().takeLongestTurn();
    sample.stop();
    return longest;
}

/// Every turn, since there is one sweep only.
std::vector<Seconds> sweepManyFiles(ModelSample& sample)
{
    sample.reset();
    sample.start();
    sample.addFiles(manyFiles);
    sample.loop().takeTurns();
    sample.sweep(manyFiles);
    std::vector<Seconds> turns = sample.loop().takeTurns();
    sample.stop();
    return turns;
}

std::vector<Seconds> turnEmptyLoop(MeasuredLoop& loop)
{
    constexpr int turns = 100;
    loop.takeTurns();
    for (int count = 0; count < turns; ++count) {
        bool isDone = false;
        loop.post([&] { isDone = true; });
        loop.runUntil([&] { return isDone; });
    }
    return loop.takeTurns();
}

void addCase(const Responsiveness::Subject& subject, Work work, const Sample& sample,
    const Loop& loop, Suite& suite)
{
    suite.add(Responsiveness(
        subject, [=] { return work(sample.get()); }, [=] { return turnEmptyLoop(loop.get()); }));
}

void addCasesFor(const Place& place, const Loop& loop, Suite& suite)
{
    const Sample sample([=] {
        return std::make_unique<ModelSample>(
            loop.get(), place, "model", SampleJournal::make(largeJournal));
    });
    const auto add = [&](const char* work, const char* each, Work measured) {
        addCase({.work = work, .each = each, .size = largeJournal, .place = place.name}, measured,
            sample, loop, suite);
    };
    add("launch", "longest turn of each launch", launch);
    add("sweep of 5 files", "longest turn of each sweep", sweepAgainAndAgain);
    add("settings edit", "longest turn of each edit", editAgainAndAgain);
    add("settings edit in a sweep", "longest turn of each edit", editDuringASweep);
}

void addSweepOfManyFiles(const Place& place, const Loop& loop, Suite& suite)
{
    const Sample sample(
        [=] { return std::make_unique<ModelSample>(loop.get(), place, "model, many", Journal{}); });
    addCase({.work = "sweep of 10,000 files",
                .each = "turn",
                .size = 0,
                .place = place.name,
                .isOnce = true},
        sweepManyFiles, sample, loop, suite);
}

}  // namespace

void addModelCases(const std::vector<Place>& places, Suite& suite)
{
    const Loop loop([] { return std::make_unique<MeasuredLoop>(); });
    for (const Place& place : places)
        addCasesFor(place, loop, suite);
    // Waiting for the disk is left out where that can be: it would be most of the time.
    addSweepOfManyFiles(places.back(), loop, suite);
}

}  // namespace tidemark::bench
