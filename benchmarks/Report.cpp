#include "Report.h"

#include "Table.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <thread>

namespace tidemark::bench::Report {

namespace {

using Align = Table::Align;

std::string decimal(double value, int digits)
{
    std::array<char, 64> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "%.*f", digits, value);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

/// Such as "100,000".
std::string grouped(std::size_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t end = text.size(); end > 3; end -= 3)
        text.insert(end - 3, 1, ',');
    return text;
}

std::string milliseconds(Seconds time)
{
    const double value = time.count() * 1e3;
    return decimal(value, value < 10 ? 3 : 1);
}

std::string microseconds(Seconds time)
{
    return decimal(time.count() * 1e6, 1);
}

std::string mebibytes(std::size_t bytes)
{
    return decimal(static_cast<double>(bytes) / (1 << 20), 1);
}

/// Of the last minute: how many threads wanted to run at a time.
double loadAverage()
{
    double load = 0;
    ::getloadavg(&load, 1);
    return load;
}

std::string verdict(double value, std::optional<double> bar)
{
    if (!bar)
        return "";
    return value <= *bar ? "ok" : "over";
}

std::string shown(std::optional<double> bar)
{
    return bar ? decimal(*bar, 1) : "-";
}

/// `ours` and `theirs` beside each other.
void addRatio(const Comparison::Subject& subject, const Measured& ours,
    const std::string& yardstick, const Measured& theirs, std::optional<double> bar, Table& table)
{
    const double ratio = ours.wall / theirs.wall;
    table.addRow({subject.work, grouped(subject.size), subject.place, milliseconds(ours.wall),
        milliseconds(ours.cpu), yardstick, milliseconds(theirs.wall), milliseconds(theirs.cpu),
        decimal(ratio, 2), decimal(ours.cpu / theirs.cpu, 2), shown(bar), verdict(ratio, bar)});
}

void addRatios(const Comparison& comparison, Table& table)
{
    for (std::size_t i = 0; i < comparison.yardsticks().size(); ++i) {
        const Comparison::Yardstick& yardstick = comparison.yardsticks()[i];
        addRatio(comparison.subject(), comparison.ours(), yardstick.name, comparison.yardstick(i),
            yardstick.bar, table);
    }
}

void addGrowth(const Suite::Growth& growth, Table& table)
{
    if (!growth.small->isMeasured() || !growth.large->isMeasured())
        return;
    addRatio(growth.large->subject(), growth.large->ours(),
        "the same for " + grouped(growth.small->subject().size), growth.small->ours(), growth.bar,
        table);
}

Table ratios(const Suite& suite)
{
    Table table({{"work"}, {"size", Align::right}, {"on"}, {"ours ms", Align::right},
        {"CPU", Align::right}, {"yardstick"}, {"ms", Align::right}, {"CPU", Align::right},
        {"ratio", Align::right}, {"of CPU", Align::right}, {"bar", Align::right}, {""}});
    for (const auto& comparison : suite.comparisons()) {
        if (comparison->isMeasured())
            addRatios(*comparison, table);
    }
    for (const Suite::Growth& growth : suite.growths())
        addGrowth(growth, table);
    return table;
}

void addMemoryRow(const Comparison::Subject& subject, const std::string& program,
    const std::optional<std::size_t>& bytes, std::optional<std::size_t> bar, Table& table)
{
    if (!bytes)
        return;
    std::string verdict;
    if (bar)
        verdict = *bytes <= *bar ? "ok" : "over";
    table.addRow({subject.work, grouped(subject.size), subject.place, program, mebibytes(*bytes),
        bar ? mebibytes(*bar) : "-", verdict});
}

void addMemory(const Comparison& comparison, Table& table)
{
    const Comparison::Subject& subject = comparison.subject();
    addMemoryRow(subject, "ours", comparison.ours().peakBytes, subject.memoryBar, table);
    for (std::size_t i = 0; i < comparison.yardsticks().size(); ++i)
        addMemoryRow(subject, comparison.yardsticks()[i].name, comparison.yardstick(i).peakBytes,
            std::nullopt, table);
}

/// Of those that have a bar.
Table memory(const Suite& suite)
{
    Table table({{"peak memory of"}, {"size", Align::right}, {"on"}, {"program"},
        {"MiB", Align::right}, {"bar", Align::right}, {""}});
    for (const auto& comparison : suite.comparisons()) {
        if (comparison->isMeasured() && comparison->subject().memoryBar)
            addMemory(*comparison, table);
    }
    return table;
}

Table responsiveness(const Suite& suite)
{
    Table table({{"main thread held by"}, {"journal", Align::right}, {"on"}, {"by each"},
        {"values", Align::right}, {"median ms", Align::right}, {"p99", Align::right},
        {"longest", Align::right}, {"empty loop us", Align::right}, {"longest", Align::right},
        {"bar of p99", Align::right}, {""}});
    for (const auto& each : suite.responsiveness()) {
        if (!each->isMeasured())
            continue;
        const Responsiveness::Subject& subject = each->subject();
        const Responsiveness::Spread ours = each->ours();
        const Responsiveness::Spread empty = each->emptyLoop();
        table.addRow({subject.work, grouped(subject.size), subject.place, subject.each,
            grouped(ours.count), milliseconds(ours.median), milliseconds(ours.percentile99),
            milliseconds(ours.longest), microseconds(empty.percentile99),
            microseconds(empty.longest), decimal(Responsiveness::bar.count() * 1e3, 1),
            ours.percentile99 <= Responsiveness::bar ? "ok" : "over"});
    }
    return table;
}

std::string seconds(Seconds time)
{
    return decimal(time.count(), 1);
}

/// How many times as much memory ours takes.
double times(std::size_t ours, std::size_t theirs)
{
    return static_cast<double>(ours) / static_cast<double>(theirs);
}

std::vector<std::string> idleCells(const Idleness& idleness)
{
    return {seconds(idleness.rest), grouped(idleness.wakeUps), mebibytes(idleness.memory.resident),
        mebibytes(idleness.memory.unshared)};
}

void addIdleRow(const IdleCase& idle, Table& table)
{
    const IdleCase::Subject& subject = idle.subject();
    const ProcessMemory& ours = idle.ours().memory;
    const ProcessMemory& empty = idle.emptyProgram().memory;
    const double unshared = times(ours.unshared, empty.unshared);
    std::vector<std::string> cells{subject.work, grouped(subject.size), subject.place};
    for (std::string& cell : idleCells(idle.ours()))
        cells.push_back(std::move(cell));
    cells.push_back(decimal(unshared, 2));
    cells.push_back(mebibytes(ours.anonymous));
    cells.push_back(decimal(times(ours.anonymous, empty.anonymous), 2));
    cells.push_back(idle.ours().preparation ? milliseconds(*idle.ours().preparation) : "-");
    if (subject.residentBar) {
        const bool isMet = idle.ours().wakeUps == 0 && ours.resident <= *subject.residentBar
            && unshared <= IdleCase::unsharedBar;
        cells.push_back(mebibytes(*subject.residentBar));
        cells.emplace_back(isMet ? "ok" : "over");
    }
    table.addRow(std::move(cells));
}

void addEmptyProgram(const IdleCase& idle, Table& table)
{
    std::vector<std::string> cells{idle.subject().emptyProgram, "-", idle.subject().place};
    for (std::string& cell : idleCells(idle.emptyProgram()))
        cells.push_back(std::move(cell));
    cells.insert(cells.end(), {"", mebibytes(idle.emptyProgram().memory.anonymous)});
    table.addRow(std::move(cells));
}

/// Each group of cases after the empty program that it is compared with. No wake-ups are allowed, and as much
/// private memory as IdleCase::unsharedBar says.
Table idleness(const Suite& suite)
{
    Table table({{"at rest"}, {"size", Align::right}, {"on"}, {"seconds", Align::right},
        {"wake-ups", Align::right}, {"RSS MiB", Align::right}, {"private", Align::right},
        {"times empty", Align::right}, {"anonymous", Align::right}, {"times empty", Align::right},
        {"ready ms", Align::right}, {"bar of RSS", Align::right}, {""}});
    std::string emptyProgram;
    for (const auto& idle : suite.idleCases()) {
        if (!idle->isMeasured())
            continue;
        if (emptyProgram != idle->subject().emptyProgram)
            addEmptyProgram(*idle, table);
        emptyProgram = idle->subject().emptyProgram;
        addIdleRow(*idle, table);
    }
    return table;
}

Table absolutes(const std::vector<AbsoluteResult>& results)
{
    Table table({{"without a yardstick"}, {"microseconds", Align::right}, {"MB/s", Align::right}});
    for (const AbsoluteResult& result : results) {
        table.addRow({result.name, decimal(result.nanoseconds / 1e3, 3),
            result.bytesPerSecond ? decimal(*result.bytesPerSecond / 1e6, 0) : ""});
    }
    return table;
}

void print(const Table& table, std::ostream& output)
{
    if (table.isEmpty())
        return;
    output << '\n';
    table.print(output);
}

}  // namespace

void print(
    const Suite& suite, const std::vector<AbsoluteResult>& absoluteResults, std::ostream& output)
{
    output << "Times are medians of runs made in turn, in milliseconds; ratios are those of the "
              "medians.\n"
           << std::thread::hardware_concurrency() << " processors, load "
           << decimal(loadAverage(), 1)
           << " in the end (the benchmarks make about 1 themselves).\n";
    print(ratios(suite), output);
    print(memory(suite), output);
    print(responsiveness(suite), output);
    print(idleness(suite), output);
    print(absolutes(absoluteResults), output);
}

}  // namespace tidemark::bench::Report
