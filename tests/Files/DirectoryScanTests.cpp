#include "DirectoryScan.h"

#include "InMemoryFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

using namespace tidemark;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

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
    InMemoryFileManager disk{{"/in/7", ""}, {"/in/07", ""}, {"/in/007", ""}};
    std::vector<std::string> listed;
    for (const DirectoryEntry& entry : disk.contentsOfDirectory(FileURL("/in")))
        listed.push_back(entry.name);
    ASSERT_THAT(listed, UnorderedElementsAre("7", "07", "007"));

    EXPECT_EQ(scannedNames(disk), listed);
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
