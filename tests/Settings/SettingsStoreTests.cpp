#include "SettingsStore.h"

#include "DecodingError.h"
#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"
#include "ManualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace tidemark;
using testing::ElementsAre;

namespace {

const ManualClock noon{Date(Seconds(1714737600))};  // 2024-05-03T12:00:00Z
const FileURL file{"/support/Tidemark/settings.json"};

SettingsStore storeOn(FileManager& disk)
{
    return {file, disk, noon};
}

}  // namespace

TEST(SettingsStore, LoadsTheDefaultsWithoutAFileAndMakesNone)
{
    InMemoryFileManager disk;

    EXPECT_EQ(storeOn(disk).load(), Settings());
    EXPECT_TRUE(disk.tree().empty());
}

TEST(SettingsStore, MakesItsFolderAndLoadsWhatItSaved)
{
    InMemoryFileManager disk;
    const Settings settings{.folders = {{.path = "/in"}}, .isPaused = true};

    storeOn(disk).save(settings);

    EXPECT_EQ(storeOn(disk).load(), settings);
    EXPECT_THAT(disk.tree(),
        ElementsAre("/support/", "/support/Tidemark/", "/support/Tidemark/settings.json"));
}

TEST(SettingsStore, ReportsAFileThatHoldsSomethingElse)
{
    for (const char* text : {"", "{", "[]", "\"settings\"", R"({"isPaused": 1})"}) {
        InMemoryFileManager disk{{file.path(), text}};
        EXPECT_THROW(storeOn(disk).load(), DecodingError) << text;
        EXPECT_EQ(disk.content(file.path()), text);
    }
}

TEST(SettingsStore, PassesOnThatTheFileCannotBeRead)
{
    InMemoryFileManager disk{{file.path(), "{}"}};
    disk.makeUnreadable(file.path());

    EXPECT_THROW(storeOn(disk).load(), std::filesystem::filesystem_error);
}

TEST(SettingsStore, RefusesAHugeFile)
{
    InMemoryFileManager disk{{file.path(), std::string((64U << 20U) + 1, ' ')}};

    EXPECT_THROW(storeOn(disk).load(), std::filesystem::filesystem_error);
}

TEST(SettingsStore, KeepsAnUnreadableFileBesideTheNewOne)
{
    InMemoryFileManager disk{{file.path(), "{torn"}};

    storeOn(disk).save(Settings());
    EXPECT_EQ(storeOn(disk).load(), Settings());
    EXPECT_EQ(disk.content(file.path() + ".unreadable-20240503T120000Z"), "{torn");

    disk.remove(file.path());
    disk.addFile(file.path(), "torn again");
    storeOn(disk).save(Settings());
    EXPECT_EQ(disk.content(file.path() + ".unreadable-20240503T120000Z"), "{torn");
    EXPECT_EQ(disk.content(file.path() + ".unreadable-20240503T120000Z-2"), "torn again");
}

TEST(SettingsStore, KeepsAFileThatMayNotBeReadBesideTheNewOne)
{
    InMemoryFileManager disk{{file.path(), "secret"}};
    disk.makeUnreadable(file.path());

    storeOn(disk).save(Settings());

    EXPECT_EQ(disk.contentsOfEveryFile().count("secret"), 1U);
    EXPECT_EQ(storeOn(disk).load(), Settings());
}

TEST(SettingsStore, ReplacesAReadableFileWithoutKeepingIt)
{
    InMemoryFileManager disk;
    storeOn(disk).save(Settings{.isPaused = true});
    storeOn(disk).save(Settings{.isPaused = false});

    EXPECT_EQ(disk.contentsOfEveryFile().size(), 1U);
    EXPECT_FALSE(storeOn(disk).load().isPaused);
}

TEST(SettingsStore, AFaultAtAnyCallLosesNeitherAGoodFileNorABadOne)
{
    for (const std::string old : {"{\"isPaused\" : true}", "{torn"}) {
        for (int call = 0;; ++call) {
            SCOPED_TRACE(testing::Message() << old << ", fault at file call " << call);
            InMemoryFileManager disk{{file.path(), old}};
            FaultInjectingFileManager files{disk, failAt(call, std::errc::no_space_on_device)};
            bool isSaved = true;
            try {
                storeOn(files).save(Settings());
            } catch (const std::filesystem::filesystem_error&) {
                isSaved = false;
            }
            if (!isSaved) {
                EXPECT_EQ(disk.content(file.path()), old);
            } else if (old == "{torn") {
                EXPECT_EQ(disk.contentsOfEveryFile().count(old), 1U);
            }
            if (!files.faultFired())
                break;
        }
    }
}
