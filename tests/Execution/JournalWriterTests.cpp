#include "JournalWriter.h"

#include "ExecutionFixture.h"
#include "JSONCoders.h"

#include <gtest/gtest.h>

using namespace tidemark;
using Op = JournalEntry::Op;

namespace {

/// The journal that the writer stands for.
Journal whole(Journal before, const JournalWriter& writer)
{
    before.sweeps.push_back(writer.record());
    return before;
}

Journal withEntries(std::size_t count)
{
    Journal journal;
    journal.sweeps.push_back({.startedAt = sweepTime, .entries = {}});
    for (std::size_t index = 0; index < count; ++index)
        journal.sweeps[0].entries.push_back(entry(Op::move, "/in/[\n\n]", "/out"));
    return journal;
}

}  // namespace

TEST(JournalWriter, AlwaysWritesTheFileThatTheStoreWouldWrite)
{
    for (const Journal& before : {Journal(), withEntries(0), withEntries(2)}) {
        InMemoryFileManager disk;
        const JournalStore store = journalOn(disk);
        store.save(before);
        JournalWriter writer(store, sweepTime);
        const auto expectSame = [&](const char* step) {
            writer.save();
            EXPECT_EQ(disk.content(journalURL.path()), JSONCoders::encode(whole(before, writer)))
                << step;
        };
        expectSame("empty record");
        writer.append(entry(Op::move, "/in/a", "/out/a"));
        expectSame("one entry");
        writer.append(entry(Op::trash, "/in/b", "/in/b"));
        expectSame("two entries");
        writer.setLastDestination("/Trash/b \"x\"");
        expectSame("another destination");
        EXPECT_EQ(writer.record().entries[1].to, "/Trash/b \"x\"");
        writer.append(entry(Op::rename, "/in/c", "/in/d"));
        writer.truncate(1);
        expectSame("back to one");
        writer.truncate(0);
        expectSame("back to none");
        writer.append(entry(Op::archive, "/in/e", "/out/e"));
        expectSame("one again");
    }
}

TEST(JournalWriter, SavesNothingBeforeItIsAsked)
{
    InMemoryFileManager disk;
    const JournalStore store = journalOn(disk);
    JournalWriter writer(store, sweepTime);
    writer.append(entry(Op::move, "/in/a", "/out/a"));

    EXPECT_TRUE(disk.tree().empty());
}
