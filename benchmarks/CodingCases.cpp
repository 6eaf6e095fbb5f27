#include "Cases.h"

#include "JSONCoders.h"
#include "SampleJournal.h"

#include <benchmark/benchmark.h>

#include <array>

namespace tidemark::bench {

namespace {

constexpr std::array<std::size_t, 2> sizes{1'000, 100'000};

void setBytes(benchmark::State& state, std::size_t bytesEachTime)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytesEachTime));
}

void encodeJournal(std::size_t entries, benchmark::State& state)
{
    const Journal journal = SampleJournal::make(entries);
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::string text = JSONCoders::encode(journal);
        bytes = text.size();
    }
    setBytes(state, bytes);
}

void decodeJournal(std::size_t entries, benchmark::State& state)
{
    const std::string text = JSONCoders::encode(SampleJournal::make(entries));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(JSONCoders::decode<Journal>(text, "journal.json"));
    setBytes(state, text.size());
}

/// The first half of decoding, without making a Journal.
void readJSON(std::size_t entries, benchmark::State& state)
{
    const std::string text = JSONCoders::encode(SampleJournal::make(entries));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(JSONDocument(text, "journal.json"));
    setBytes(state, text.size());
}

void add(const std::string& name, void (*run)(std::size_t, benchmark::State&), std::size_t size)
{
    benchmark::RegisterBenchmark((name + '/' + std::to_string(size)).c_str(),
        [=](benchmark::State& state) { run(size, state); })
        ->UseRealTime();
}

}  // namespace

void addCodingCases()
{
    for (const std::size_t size : sizes) {
        add("encode a journal", encodeJournal, size);
        add("decode a journal", decodeJournal, size);
        add("read a journal's JSON", readJSON, size);
    }
}

}  // namespace tidemark::bench
