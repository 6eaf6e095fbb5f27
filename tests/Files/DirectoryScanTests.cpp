#include "DirectoryScan.h"

#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;

/// A disk that lists its folders in another order than that of the names.
class BackwardsListing final : public FaultInjectingFileManager {
public:
    using FaultInjectingFileManager::FaultInjectingFileManager;

    std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder) override
    {
        auto entries = FaultInjectingFileManager::contentsOfDirectory(folder);
        std::ranges::reverse(entries);
        return entries;
    }
};

static std::vector<std::string> scannedNames(FileManager& disk)
{
    std::vector<std::string> names;
    for (const FileInfo& file : DirectoryScan::files(FileURL::directory("/in"), disk))
        names.emplace_back(file.url.lastPathComponent());
    return names;
}

TEST(DirectoryScan, FindsNothingAmongSubfoldersAndHiddenFiles)
{
    InMemoryFileManager disk{{"/in/.hidden", ""}, {"/in/sub/file.txt", ""}, {"/in/App.app/x", ""}};
    disk.addLink("/in/link", "/in/sub/file.txt");
    disk.addSpecialFile("/in/fifo");

    EXPECT_THAT(scannedNames(disk), IsEmpty());
}

TEST(DirectoryScan, OrdersNamesAsAFileBrowserDoes)
{
    InMemoryFileManager disk{{"/in/Report 10.pdf", ""}, {"/in/Report 9.pdf", ""}, {"/in/b.txt", ""},
        {"/in/A.txt", ""}, {"/in/a.txt", ""}};

    EXPECT_THAT(scannedNames(disk),
        ElementsAre("a.txt", "A.txt", "b.txt", "Report 9.pdf", "Report 10.pdf"));
}

TEST(DirectoryScan, KeepsTheListingOrderOfNamesItCannotTellApart)
{
    InMemoryFileManager disk;
    for (std::size_t zeros = 0; zeros < 40; ++zeros)
        disk.addFile("/in/" + std::string(zeros, '0') + "7", "");
    BackwardsListing backwards(disk);
    std::vector<std::string> listed;
    for (const DirectoryEntry& entry : backwards.contentsOfDirectory(FileURL("/in")))
        listed.push_back(entry.name);
    ASSERT_EQ(listed.front(), "7");

    EXPECT_EQ(scannedNames(backwards), listed);
}

TEST(DirectoryScan, LeavesOutCloudItemsUntilTheyAreDownloaded)
{
    InMemoryFileManager disk{{"/in/film.mp4", ""}};

    disk.setCloudStatus("/in/film.mp4", CloudStatus::notDownloaded);
    EXPECT_THAT(scannedNames(disk), IsEmpty());

    disk.setCloudStatus("/in/film.mp4", CloudStatus::downloaded);
    EXPECT_THAT(scannedNames(disk), ElementsAre("film.mp4"));
}

TEST(DirectoryScan, GivesAbsoluteURLsAndFrontMatter)
{
    InMemoryFileManager disk{{"/in/n.md", "---\ntitle: Plan\n---"}};

    const std::vector<FileInfo> files = DirectoryScan::files(FileURL::directory("/in"), disk);

    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].url, FileURL("/in/n.md"));
    EXPECT_EQ(files[0].frontMatter->title, "Plan");
}

TEST(DirectoryScan, FailsWhenTheFolderCannotBeListed)
{
    struct Row {
        const char* name;
        std::function<void(InMemoryFileManager&)> arrange;
    };
    for (const Row& row : {
             Row{"missing", [](InMemoryFileManager&) {}},
             Row{"a file", [](InMemoryFileManager& disk) { disk.addFile("/in", ""); }},
             Row{"unreadable",
                 [](InMemoryFileManager& disk) {
                     disk.addFile("/in/a", "");
                     disk.makeUnreadable("/in");
                 }},
         }) {
        InMemoryFileManager disk;
        row.arrange(disk);
        EXPECT_THROW(scannedNames(disk), std::filesystem::filesystem_error) << row.name;
    }
}

TEST(DirectoryScan, FailsAsAWholeWhenOneEntryCannotBeRead)
{
    InMemoryFileManager disk{{"/in/a.txt", ""}, {"/in/b.txt", ""}, {"/in/c.txt", ""}};
    disk.makeUnreadable("/in/b.txt");

    EXPECT_THROW(scannedNames(disk), std::filesystem::filesystem_error);
}

TEST(DirectoryScan, FollowsALinkThatIsTheFolderItself)
{
    InMemoryFileManager disk{{"/real/a.txt", ""}};
    disk.addLink("/in", "/real");

    EXPECT_THAT(scannedNames(disk), ElementsAre("a.txt"));
}
