#include "Cases.h"

#include "Clock.h"
#include "DefaultRules.h"
#include "Matcher.h"
#include "NameOrder.h"
#include "Planner.h"
#include "SampleFiles.h"
#include "StabilityGate.h"

#include <benchmark/benchmark.h>

namespace tidemark::bench {

namespace {

constexpr std::size_t files = 10'000;
constexpr Seconds age{100 * secondsPerDay};

FileInfo fileInfo(std::size_t index, Date now)
{
    const FileURL folder = FileURL::directory("/home/josephine.example/Downloads");
    const Date then = now - age;
    return {.url = folder.appending(SampleFiles::name(index)),
        .modified = then,
        .added = then,
        .lastOpened = then,
        .created = then,
        .frontMatter = std::nullopt};
}

std::vector<FileInfo> fileInfos(Date now)
{
    std::vector<FileInfo> result;
    for (std::size_t index = 0; index < files; ++index)
        result.push_back(fileInfo(index, now));
    return result;
}

std::vector<Rule> rules()
{
    const FileURL home = FileURL::directory("/home/josephine.example");
    std::vector<Rule> all = DefaultRules::all(
        home.appending("Desktop/Screenshots"), home.appending("Downloads/Archive"));
    all.insert(all.begin(), DefaultRules::markdown(home.appending("Downloads/Notes")));
    return all;
}

void setFiles(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(files));
}

void matchEachRule(benchmark::State& state)
{
    const Date now = SystemClock().now();
    const std::vector<FileInfo> infos = fileInfos(now);
    const std::vector<Rule> all = rules();
    for ([[maybe_unused]] auto _ : state) {
        for (const FileInfo& info : infos) {
            for (const Rule& rule : all)
                benchmark::DoNotOptimize(Matcher::matches(rule.match, info, now));
        }
    }
    setFiles(state);
}

void checkStability(benchmark::State& state)
{
    const Date now = SystemClock().now();
    const std::vector<FileInfo> infos = fileInfos(now);
    for ([[maybe_unused]] auto _ : state) {
        for (const FileInfo& info : infos)
            benchmark::DoNotOptimize(StabilityGate::isStable(info, Seconds(60), now));
    }
    setFiles(state);
}

void plan(benchmark::State& state)
{
    const Date now = SystemClock().now();
    const std::vector<FileInfo> infos = fileInfos(now);
    const std::vector<Rule> all = rules();
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        std::vector<FileInfo> consumed = infos;
        state.ResumeTiming();
        benchmark::DoNotOptimize(Planner::plan(std::move(consumed), all, now));
    }
    setFiles(state);
}

void makeSortKeys(benchmark::State& state)
{
    const std::vector<FileInfo> infos = fileInfos(SystemClock().now());
    const NameOrder order;
    std::string keys;
    for ([[maybe_unused]] auto _ : state) {
        keys.clear();
        for (const FileInfo& info : infos)
            order.appendSortKey(info.url.lastPathComponent(), keys);
    }
    setFiles(state);
}

}  // namespace

void addPlanningCases()
{
    benchmark::RegisterBenchmark("match four rules, each file", matchEachRule);
    benchmark::RegisterBenchmark("check stability, each file", checkStability);
    benchmark::RegisterBenchmark("plan, each file", plan);
    benchmark::RegisterBenchmark("make sort keys, each file", makeSortKeys);
}

}  // namespace tidemark::bench
