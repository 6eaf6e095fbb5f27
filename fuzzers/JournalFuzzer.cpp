#include "DecodingError.h"
#include "Executor.h"
#include "InMemoryFileManager.h"
#include "JSONCoders.h"
#include "Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace tidemark {

static const FileURL journalURL{"/support/journal.json"};

static std::optional<Journal> decoded(const std::string& text)
{
    try {
        return JSONCoders::decode<Journal>(text, "journal.json");
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// A text that is kept as it stands must be what would be written in its place.
static void requireVerifierToBeRight(const std::string& text, const std::optional<Journal>& journal)
{
    if (JSONCoders::isEncoded<Journal>(text))
        require(journal && JSONCoders::encode(*journal) == text,
            "a text that is taken for our own is just what would be written");
}

static bool isWritable(Date date)
{
    return parseISO8601(formatISO8601(date)) == date;
}

/// Whether every date lies in the years that can be written; others are brought to their ends.
static bool hasWritableDates(const Journal& journal)
{
    return std::ranges::all_of(journal.sweeps, [](const SweepRecord& sweep) {
        return isWritable(sweep.startedAt)
            && std::ranges::all_of(
                sweep.entries, [](const JournalEntry& entry) { return isWritable(entry.at); });
    });
}

static void requireToReadTheSame(const Journal& journal)
{
    const std::string text = JSONCoders::encode(journal);
    const std::optional<Journal> again = decoded(text);
    require(again.has_value(), "a journal that is written can be read");
    require(*again == journal || !hasWritableDates(journal), "and reads the same");
    require(JSONCoders::encode(*again) == text, "and is written the same again");
    // The verifier leaves control characters to the decoder.
    require(JSONCoders::isEncoded<Journal>(text) || text.find("\\u00") != std::string::npos,
        "and is known as our own");
}

/// Something lies wherever the journal says so, and in the way of where it belongs.
static void addFiles(const Journal& journal, InMemoryFileManager& disk)
{
    int number = 0;
    for (const SweepRecord& sweep : journal.sweeps) {
        for (const JournalEntry& entry : sweep.entries) {
            for (const std::string& path : {entry.to, entry.from}) {
                try {
                    const FileURL url{path};
                    if (++number % 4 != 0 && !disk.fileExists(url)
                        && url.parent() != journalURL.parent())
                        disk.addFile(url.path(), "file " + std::to_string(number));
                } catch (const std::filesystem::filesystem_error&) {
                    // No file can lie there.
                }
            }
        }
    }
}

static std::multiset<std::string> contentsOfFiles(const InMemoryFileManager& disk)
{
    std::multiset<std::string> contents = disk.contentsOfEveryFile();
    std::erase_if(contents, [](const std::string& each) { return !each.starts_with("file "); });
    return contents;
}

static void requireUndoToLoseNothing(const Journal& journal)
{
    constexpr std::size_t mostSweeps = 4;
    InMemoryFileManager disk;
    addFiles(journal, disk);
    const std::multiset<std::string> before = contentsOfFiles(disk);
    const JournalStore store{journalURL, disk};
    Executor executor{store, disk};
    try {
        store.save(journal);
        for (std::size_t sweep = 0; sweep < std::min(mostSweeps, journal.sweeps.size()); ++sweep)
            executor.undoLastSweep(Date{});
    } catch (const std::filesystem::filesystem_error&) {
        // An undo may fail, but not at the cost of a file.
    }
    require(contentsOfFiles(disk) == before, "undo loses no file and replaces none");
}

}  // namespace tidemark

/// Whatever stands in journal.json: it is read without harm; what was read is written such that it reads the
/// same; and whatever it says, taking it back loses nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    const std::string text{reinterpret_cast<const char*>(data), size};
    const std::optional<Journal> journal = decoded(text);
    requireVerifierToBeRight(text, journal);
    if (!journal)
        return 0;
    requireToReadTheSame(*journal);
    requireUndoToLoseNothing(*journal);
    return 0;
}
