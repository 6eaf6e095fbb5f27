#include "Cases.h"

#include "Child/FolderWalk.h"
#include "ChildProcess.h"
#include "Lazy.h"
#include "SampleFolder.h"
#include "Stopwatch.h"

#include <benchmark/benchmark.h>

#include <array>

namespace tidemark::bench {

namespace {

using Sample = Lazy<SampleFolder>;

constexpr std::array<std::size_t, 3> sizes{1'000, 10'000, 100'000};
constexpr std::size_t largest = sizes.back();
constexpr double barOfFind = 2.0;
constexpr double barOfGrowth = 12.0;
constexpr std::size_t barOfMemory = std::size_t{64} << 20U;

Sample sampleOf(std::size_t files, const Place& place)
{
    return Sample([=] { return std::make_unique<SampleFolder>(place, files); });
}

Measured preview(const FileURL& support, const std::vector<std::string>& options = {})
{
    std::vector<std::string> arguments{TIDEMARKCTL_PROGRAM, "--support", support.path(), "preview",
        "--now", formatISO8601(SampleFolder::sweepDate())};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return ChildProcess::measure(arguments);
}

Comparison::Yardstick find(const Sample& sample, std::optional<double> bar)
{
    return {"find",
        [=] {
            return ChildProcess::measure({"find", sample.get().files().path(), "-maxdepth", "1",
                "-type", "f", "-printf", R"(%T@ %f\n)"});
        },
        bar};
}

Comparison::Yardstick walkAsProcess(const Sample& sample)
{
    return {"readdir, statx (process)", [=] {
                return ChildProcess::measure(
                    {TIDEMARK_BENCH_CHILD_PROGRAM, "readdir-statx", sample.get().files().path()});
            }};
}

Comparison::Yardstick walk(const Sample& sample)
{
    return {"readdir, statx", [=] {
                const std::string path = sample.get().files().path();
                return Stopwatch::time(
                    [&] { benchmark::DoNotOptimize(FolderWalk::over(path).sumOfModifiedSeconds); });
            }};
}

const Comparison& addPreview(
    std::size_t size, const Sample& sample, const Place& place, Suite& suite)
{
    // The bars are those of the largest folder: on small ones the start of a process counts most.
    const bool isLargest = size == largest;
    return suite.add(
        Comparison({.work = "preview",
                       .size = size,
                       .place = place.name,
                       .memoryBar = isLargest ? std::optional(barOfMemory) : std::nullopt},
            [=] { return preview(sample.get().supportBeforeFirstSweep()); },
            {find(sample, isLargest ? std::optional(barOfFind) : std::nullopt),
                walkAsProcess(sample), walk(sample)}));
}

void addVariants(const Sample& sample, const Place& place, Suite& suite)
{
    suite.add(Comparison({.work = "preview into existing folders",
                             .size = largest,
                             .place = place.name,
                             .memoryBar = barOfMemory},
        [=] { return preview(sample.get().supportLater()); }, {find(sample, barOfFind)}));
    suite.add(Comparison(
        {.work = "preview --json", .size = largest, .place = place.name, .memoryBar = barOfMemory},
        [=] { return preview(sample.get().supportBeforeFirstSweep(), {"--json"}); },
        {find(sample, std::nullopt)}));
}

}  // namespace

void addPreviewCases(const Place& place, Suite& suite)
{
    const Comparison* smaller = nullptr;
    for (const std::size_t size : sizes) {
        const Sample sample = sampleOf(size, place);
        const Comparison& comparison = addPreview(size, sample, place, suite);
        if (size == largest) {
            addVariants(sample, place, suite);
            suite.expectGrowth(*smaller, comparison, barOfGrowth);
        }
        smaller = &comparison;
    }
}

}  // namespace tidemark::bench
