#include "JournalReader.h"

#include "DecodingError.h"
#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"

#include <gtest/gtest.h>

using namespace tidemark;

static const FileURL journalURL{"/support/journal.json"};

TEST(JournalReader, DecodesAgainOnlyWhenTheFileHasChanged)
{
    InMemoryFileManager disk;
    FaultInjectingFileManager counting(disk);
    const JournalStore store(journalURL, disk);
    JournalReader reader(JournalStore(journalURL, counting), counting);

    EXPECT_TRUE(reader.read()->sweeps.empty());
    store.save({{SweepRecord{.startedAt = {}, .entries = {}}}});
    EXPECT_EQ(reader.read()->sweeps.size(), 1U);
    const int readsBefore = counting.callCount(FileCall::readFile);
    EXPECT_EQ(reader.read()->sweeps.size(), 1U);
    EXPECT_EQ(counting.callCount(FileCall::readFile), readsBefore);

    store.save({});
    EXPECT_TRUE(reader.read()->sweeps.empty());
    disk.remove(journalURL.path());
    EXPECT_TRUE(reader.read()->sweeps.empty());
}

TEST(JournalReader, FailsOnADamagedFileUntilItIsMended)
{
    InMemoryFileManager disk{{journalURL.path(), R"({"sweeps":[]})"}};
    JournalReader reader(JournalStore(journalURL, disk), disk);
    EXPECT_TRUE(reader.read()->sweeps.empty());

    disk.remove(journalURL.path());
    disk.addFile(journalURL.path(), "{torn");
    EXPECT_THROW(reader.read(), DecodingError);
    EXPECT_THROW(reader.read(), DecodingError);

    disk.remove(journalURL.path());
    EXPECT_TRUE(reader.read()->sweeps.empty());
}
