#include "SampleJournal.h"

#include "SampleFiles.h"

namespace tidemark::bench::SampleJournal {

namespace {

constexpr std::size_t entriesInSweep = 20;
constexpr Date firstSweep{Seconds{1'640'995'200}};
constexpr Seconds betweenSweeps{3'600};

JournalEntry entry(std::size_t index, Date at)
{
    const FileURL from = FileURL::directory(
        "/home/josephine.example/Documents/Projects/Tide tables/Incoming from the harbour office");
    const FileURL to = FileURL::directory(
        "/home/josephine.example/Downloads/Archive/Tide tables and charts/2024-05/sorted");
    const std::string name = SampleFiles::name(index);
    return JournalEntry::between(
        JournalEntry::Op::move, from.appending(name), to.appending(name), at);
}

}  // namespace

Journal make(std::size_t entries)
{
    Journal journal;
    for (std::size_t index = 0; index < entries; ++index) {
        if (index % entriesInSweep == 0) {
            const auto sweeps = static_cast<double>(journal.sweeps.size());
            journal.sweeps.push_back({.startedAt = firstSweep + betweenSweeps * sweeps});
        }
        SweepRecord& sweep = journal.sweeps.back();
        sweep.entries.push_back(entry(index, sweep.startedAt));
    }
    return journal;
}

}  // namespace tidemark::bench::SampleJournal
