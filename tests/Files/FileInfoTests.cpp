#include "FileInfo.h"

#include "FaultInjectingFileManager.h"
#include "InMemoryFileManager.h"

#include <gtest/gtest.h>

using namespace tidemark;

static Date day(double number)
{
    return Date(Seconds(number * secondsPerDay));
}

TEST(FileInfo, TakesEveryDateFromTheFileSystem)
{
    InMemoryFileManager disk{{"/a.txt", ""}};
    disk.setModified("/a.txt", day(1));
    disk.setAdded("/a.txt", day(2));
    disk.setLastOpened("/a.txt", day(3));
    disk.setCreated("/a.txt", day(4));

    const FileInfo info = FileInfo::readingResourceValues(disk, FileURL("/a.txt"));

    EXPECT_EQ(info.modified, day(1));
    EXPECT_EQ(info.added, day(2));
    EXPECT_EQ(info.lastOpened, day(3));
    EXPECT_EQ(info.created, day(4));
    EXPECT_EQ(info.url, FileURL("/a.txt"));
    EXPECT_FALSE(info.isScreenCapture);
}

TEST(FileInfo, FallsBackToTheModificationDate)
{
    InMemoryFileManager disk{{"/a.txt", ""}};
    disk.setAllDates("/a.txt", std::nullopt);
    disk.setModified("/a.txt", day(1));

    const FileInfo info = FileInfo::readingResourceValues(disk, FileURL("/a.txt"));

    EXPECT_EQ(info.added, day(1));
    EXPECT_EQ(info.lastOpened, day(1));
    EXPECT_EQ(info.created, day(1));
}

TEST(FileInfo, FallsBackToTheDistantPastWithoutAnyDate)
{
    InMemoryFileManager disk{{"/a.txt", ""}};
    disk.setAllDates("/a.txt", std::nullopt);

    const FileInfo info = FileInfo::readingResourceValues(disk, FileURL("/a.txt"));

    EXPECT_EQ(info.modified, distantPast);
    EXPECT_EQ(info.added, distantPast);
    EXPECT_EQ(info.lastOpened, distantPast);
    EXPECT_EQ(info.created, distantPast);
}

TEST(FileInfo, ReadsFrontMatterOfMarkdownNotesOnly)
{
    struct Row {
        const char* path;
        bool hasFrontMatter;
    };
    for (const Row& row : {Row{"/notes.md", true}, Row{"/NOTES.MD", true},
             Row{"/notes.markdown", true}, Row{"/notes.MarkDown", true}, Row{"/notes.mdx", false},
             Row{"/notes.txt", false}, Row{"/md", false}, Row{"/notes.md.bak", false}}) {
        InMemoryFileManager disk{{row.path, "---\ntitle: Plan\n---\n"}};
        const FileInfo info = FileInfo::readingResourceValues(disk, FileURL(row.path));
        EXPECT_EQ(info.frontMatter.has_value(), row.hasFrontMatter) << row.path;
    }
}

TEST(FileInfo, OpensNothingButMarkdownNotes)
{
    InMemoryFileManager disk{{"/a.md", "x"}, {"/a.mdx", "x"}, {"/a.txt", "x"}};
    FaultInjectingFileManager counting(disk);

    FileInfo::readingResourceValues(counting, FileURL("/a.mdx"));
    FileInfo::readingResourceValues(counting, FileURL("/a.txt"));
    EXPECT_EQ(counting.callCount(FileCall::readPrefix), 0);
    FileInfo::readingResourceValues(counting, FileURL("/a.md"));
    EXPECT_EQ(counting.callCount(FileCall::readPrefix), 1);
    EXPECT_EQ(counting.callCount(FileCall::readFile), 0);
}

TEST(FileInfo, ReadsTheFirst8192BytesOfANote)
{
    const std::string head = "---\ntitle: a\n";
    const auto note = [&](std::size_t size, std::string_view after) {
        InMemoryFileManager disk{
            {"/a.md", head + std::string(size - head.size(), 'x').append(after)}};
        return FileInfo::readingResourceValues(disk, FileURL("/a.md")).frontMatter;
    };

    EXPECT_FALSE(note(8191, "ü")) << "the last byte is half a character";
    EXPECT_TRUE(note(8190, "ü"));
    EXPECT_EQ(note(8192, "\ntitle: b")->title, "a");
    EXPECT_EQ(note(8192 - 9, "\ntitle: b")->title, "b");
}

TEST(FileInfo, HasNoFrontMatterWhenTheNoteHasNone)
{
    InMemoryFileManager disk{{"/n.md", "# Plan"}};

    EXPECT_EQ(FileInfo::readingResourceValues(disk, FileURL("/n.md")).frontMatter, std::nullopt);
}

TEST(FileInfo, KnowsAScreenCapture)
{
    InMemoryFileManager disk{{"/a.png", ""}};
    disk.setScreenCapture("/a.png");

    EXPECT_TRUE(FileInfo::readingResourceValues(disk, FileURL("/a.png")).isScreenCapture);
}

TEST(FileInfo, FailsWhenTheFactsCannotBeRead)
{
    InMemoryFileManager disk;

    EXPECT_THROW(FileInfo::readingResourceValues(disk, FileURL("/absent")),
        std::filesystem::filesystem_error);
}
