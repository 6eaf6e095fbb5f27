#include "SweepFailureStore.h"

#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"

#include <gtest/gtest.h>

using namespace tidemark;

static const FileURL noteURL{"/support/last-failure.json"};
static const SweepFailure failure{.at = Date(Seconds(1714745100)), .reason = "no such folder"};

TEST(SweepFailureStore, RemembersAFailureUntilASweepWorks)
{
    InMemoryFileManager disk;
    disk.addFolder("/support");
    const SweepFailureStore store(noteURL, disk);

    EXPECT_EQ(store.load(), std::nullopt);
    store.save(failure);
    EXPECT_EQ(store.load(), failure);
    store.save(std::nullopt);
    EXPECT_EQ(store.load(), std::nullopt);
}

TEST(SweepFailureStore, WritesNothingWhileAllIsWell)
{
    InMemoryFileManager disk;
    disk.addFolder("/support");
    SweepFailureStore(noteURL, disk).save(std::nullopt);

    EXPECT_FALSE(disk.fileExists(noteURL));
}

TEST(SweepFailureStore, DoesNotStumbleOverABadNoteOrAFullDisk)
{
    InMemoryFileManager disk{{noteURL.path(), "{torn"}};
    EXPECT_EQ(SweepFailureStore(noteURL, disk).load(), std::nullopt);

    FaultInjectingFileManager full{
        disk, failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)};
    EXPECT_NO_THROW(SweepFailureStore(noteURL, full).save(failure));
}
