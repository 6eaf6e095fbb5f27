#include "AtRest.h"
#include "Cases.h"
#include "ProgramCopies.h"
#include "SampleDesktop.h"
#include "SampleHome.h"
#include "Stopwatch.h"

#include <string>
#include <vector>

namespace tidemark::bench {

namespace {

using Desktop = Lazy<SampleDesktop>;
using Programs = Lazy<ProgramCopies>;
using Variables = std::vector<std::string>;

constexpr double startBar = 1.3;
constexpr std::size_t residentBar = std::size_t{32} << 20U;

Variables both(Variables some, const Variables& others)
{
    some.insert(some.end(), others.begin(), others.end());
    return some;
}

/// From the start of the program until the panel has its icon.
Measured startToIcon(
    const std::string& program, SampleDesktop& desktop, const Variables& environment)
{
    const Stopwatch stopwatch;
    const RunningProcess process({program}, environment);
    desktop.waitForIcon();
    return {.wall = stopwatch.elapsed().wall, .cpu = processorTimeOf(process.id())};
}

/// Of a program that shows its icon and then has nothing to do.
Idleness restWithIcon(const std::string& program, const ProgramCopies& programs,
    SampleDesktop& desktop, const Variables& environment, Seconds rest)
{
    const auto process = programs.start(program, {}, environment);
    desktop.waitForIcon();
    return measureAtRest(*process, rest);
}

}  // namespace

void addDesktopCases(const Place& place, Seconds rest, Suite& suite)
{
    const Desktop desktop([=] { return std::make_unique<SampleDesktop>(place); });
    const Lazy<SampleHome> home([=] { return std::make_unique<SampleHome>(place, 0); });
    const auto environment = [=] {
        return both(desktop.get().environment(), home.get().environment());
    };

    const auto start = [=](const std::string& program) {
        return startToIcon(program, desktop.get(), environment());
    };
    suite.add(Comparison({.work = "start to tray icon", .place = place.name},
        [=] { return start(TIDEMARK_PROGRAM); },
        {{.name = "empty tray application",
             .measure = [=] { return start(TIDEMARK_BENCH_EMPTY_TRAY_PROGRAM); },
             .bar = startBar},
            {.name = "the same, our libraries",
                .measure = [=] { return start(TIDEMARK_BENCH_LADEN_TRAY_PROGRAM); }}}));

    const Programs programs([=] {
        return std::make_unique<ProgramCopies>(
            place, std::vector<std::string>{TIDEMARK_PROGRAM, TIDEMARK_BENCH_LADEN_TRAY_PROGRAM});
    });
    const auto measure = [=](const std::string& program) {
        return restWithIcon(program, programs.get(), desktop.get(), environment(), rest);
    };
    const Lazy<Idleness> empty(
        [=] { return std::make_unique<Idleness>(measure(TIDEMARK_BENCH_LADEN_TRAY_PROGRAM)); });
    suite.add(IdleCase(
        {.work = "application, started",
            .place = place.name,
            .residentBar = residentBar,
            .emptyProgram = "empty tray application"},
        [=] { return measure(TIDEMARK_PROGRAM); }, empty));
}

}  // namespace tidemark::bench
