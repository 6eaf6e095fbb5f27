#include "FileFactsReader.h"

#include "PrivateMounts.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>

namespace tidemark {

using FileFactsReader::isPropertyListTrue;

namespace {

constexpr const char* propertyListFlag = "user.com.apple.metadata:kMDItemIsScreenCapture";
constexpr const char* plainFlag = "user.kMDItemIsScreenCapture";

/// A binary property list of one object, as a Mac writes it.
std::string propertyList(const std::string& object)
{
    const auto table = static_cast<char>(8 + object.size());
    std::string list = "bplist00" + object + '\x08';
    list += std::string(6, '\0') + '\x01' + '\x01';  // sizes of offsets and references
    list += std::string(7, '\0') + '\x01';  // one object
    list += std::string(8, '\0');  // which is the top one
    list += std::string(7, '\0') + table;
    return list;
}

void setAttribute(const FileURL& url, const char* name, const std::string& value)
{
    ASSERT_EQ(::setxattr(url.path().c_str(), name, value.data(), value.size(), 0), 0)
        << std::strerror(errno);
}

void setDates(const FileURL& url, std::int64_t accessed, std::int64_t modified)
{
    const struct timespec times[] = {{accessed, 500'000'000}, {modified, 250'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, url.path().c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

}  // namespace

TEST(FileFacts, DatesAreTheKernels)
{
    const TemporaryFolder folder;
    const FileURL file = folder.write("file", "");
    for (const std::int64_t moment :
        std::vector<std::int64_t>{-1'000'000'000, 0, 1'000'000'000, 4'000'000'000}) {
        setDates(file, moment, moment + 10);
        const FileFacts facts = FileFactsReader::facts(file);
        const auto seconds = static_cast<double>(moment);
        EXPECT_EQ(facts.lastOpened, Date{Seconds{seconds + 0.5}});
        EXPECT_EQ(facts.modified, Date{Seconds{seconds + 10.25}});
    }
}

TEST(FileFacts, AddedIsWhenTheEntryCameIntoItsFolder)
{
    const TemporaryFolder folder;
    const FileURL file = folder.write("file", "");
    setDates(file, 1'000'000'000, 1'000'000'000);
    struct stat status = {};
    ASSERT_EQ(::stat(file.path().c_str(), &status), 0);
    const FileFacts facts = FileFactsReader::facts(file);
    EXPECT_EQ(facts.added,
        dateFromUnixTime(
            status.st_ctim.tv_sec, static_cast<std::uint32_t>(status.st_ctim.tv_nsec)));
    EXPECT_GT(*facts.added, *facts.modified);
}

TEST(FileFacts, OnlyRegularFilesAreRegular)
{
    const TemporaryFolder folder;
    folder.write("file", "");
    folder.makeFolder("folder");
    folder.makeLink("link", "file");
    folder.makeLink("dangling", "nowhere");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    for (const DirectoryEntry& entry : FileFactsReader::contentsOfDirectory(folder.url())) {
        EXPECT_EQ(entry.facts.isRegularFile, entry.name == "file") << entry.name;
        EXPECT_EQ(
            FileFactsReader::facts(folder.url(entry.name)).isRegularFile, entry.name == "file")
            << entry.name;
    }
}

TEST(FileFacts, PlaceholdersOfCloudClientsAreNotDownloaded)
{
    const TemporaryFolder folder;
    struct Row {
        const char* name;
        CloudStatus status;
    };
    const Row rows[] = {{"a.pdf.nextcloud", CloudStatus::notDownloaded},
        {"a.pdf.owncloud", CloudStatus::notDownloaded}, {"a.pdf", CloudStatus::notInCloud},
        {"nextcloud", CloudStatus::notInCloud}, {"a.nextcloud.pdf", CloudStatus::notInCloud}};
    for (const Row& row : rows)
        EXPECT_EQ(FileFactsReader::facts(folder.write(row.name, "")).cloudStatus, row.status)
            << row.name;
}

struct FlagRow {
    const char* name;
    const char* attribute;
    std::string value;
    bool isScreenCapture;
};

TEST(FileFacts, TheScreenCaptureFlagIsRead)
{
    const TemporaryFolder folder;
    const FlagRow rows[] = {{"listTrue", propertyListFlag, propertyList("\x09"), true},
        {"listFalse", propertyListFlag, propertyList("\x08"), false},
        {"listText", propertyListFlag, "1", false}, {"listEmpty", propertyListFlag, "", false},
        {"listLong", propertyListFlag, propertyList("\x09") + std::string(2'000, '\0'), false},
        {"one", plainFlag, "1", true}, {"true", plainFlag, "true", true},
        {"zero", plainFlag, "0", false}, {"upper", plainFlag, "TRUE", false},
        {"newline", plainFlag, "1\n", false}, {"empty", plainFlag, "", false},
        {"other", "user.kMDItemIsScreenCaptureX", "1", false},
        {"prefix", "user.kMDItemIsScreenCaptur", "1", false}};
    for (const FlagRow& row : rows) {
        const FileURL file = folder.write(row.name, "");
        setAttribute(file, row.attribute, row.value);
        EXPECT_EQ(FileFactsReader::facts(file).isScreenCapture, row.isScreenCapture) << row.name;
    }
    for (const DirectoryEntry& entry : FileFactsReader::contentsOfDirectory(folder.url()))
        EXPECT_EQ(entry.facts, FileFactsReader::facts(folder.url(entry.name))) << entry.name;
}

TEST(FileFacts, AFlagThatMayNotBeReadCountsAsMissingAndStopsNoListing)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    const FileURL file = folder.write("shot.png", "");
    setAttribute(file, plainFlag, "1");
    ASSERT_EQ(::chmod(file.path().c_str(), 0), 0);

    const auto entries = FileFactsReader::contentsOfDirectory(folder.url());

    ASSERT_EQ(entries.size(), 1U);
    EXPECT_TRUE(entries[0].facts.isRegularFile);
    EXPECT_FALSE(entries[0].facts.isScreenCapture);
}

TEST(FileFacts, TheFlagIsFoundAmongManyAttributes)
{
    const TemporaryFolder folder;
    const FileURL file = folder.write("file", "");
    // Their names alone fill more than any reasonable buffer.
    for (int i = 0; i < 12; ++i)
        setAttribute(file, ("user." + std::string(100, 'a') + std::to_string(i)).c_str(), "");
    setAttribute(file, plainFlag, "1");
    EXPECT_TRUE(FileFactsReader::facts(file).isScreenCapture);
}

TEST(FileFacts, EitherFlagIsEnough)
{
    const TemporaryFolder folder;
    const FileURL file = folder.write("file", "");
    setAttribute(file, propertyListFlag, propertyList("\x08"));
    setAttribute(file, plainFlag, "true");
    EXPECT_TRUE(FileFactsReader::facts(file).isScreenCapture);
}

TEST(FileFacts, OnlyAWholePropertyListCounts)
{
    const std::string whole = propertyList("\x09");
    EXPECT_TRUE(isPropertyListTrue(whole));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(isPropertyListTrue(whole.substr(0, size))) << size;
        EXPECT_FALSE(isPropertyListTrue(whole.substr(whole.size() - size))) << size;
    }
}

TEST(FileFacts, NoBytesMakeThePropertyListReadOutOfBounds)
{
    const std::string whole = propertyList("\x09");
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(value);
            // The six bytes without a meaning, and the references' size: there are none.
            const std::size_t trailer = whole.size() - 32;
            const bool isUnused = (at >= trailer && at < trailer + 6) || at == trailer + 7;
            if (isUnused || damaged == whole)
                EXPECT_TRUE(isPropertyListTrue(damaged)) << at << ' ' << value;
            else if (at < 9)
                EXPECT_FALSE(isPropertyListTrue(damaged)) << at << ' ' << value;
            else
                isPropertyListTrue(damaged);
        }
    }
}

TEST(FileFacts, NamesThatAreNoTextAndHiddenOnesAreLeftOut)
{
    const TemporaryFolder folder;
    for (const char* name : {"\xFF", "a\x80", ".hidden", ".\xFF", "...", "seen", "ä\n"})
        folder.write(name, "");
    std::vector<std::string> names;
    for (const DirectoryEntry& entry : FileFactsReader::contentsOfDirectory(folder.url()))
        names.push_back(entry.name);
    EXPECT_THAT(names, testing::UnorderedElementsAre("seen", "ä\n"));
}

TEST(FileFacts, ALargeFolderIsListedWholeAndInItsOrder)
{
    const TemporaryFolder folder;
    constexpr int count = 5'000;
    for (int i = 0; i < count; ++i) {
        const FileURL file{folder.path("file" + std::to_string(i))};
        const int descriptor = ::open(file.path().c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        ASSERT_GE(descriptor, 0);
        const struct timespec times[] = {{i, 0}, {i, 0}};
        ASSERT_EQ(::futimens(descriptor, times), 0);
        ::close(descriptor);
    }
    folder.makeFolder("folder");
    std::vector<std::string> order;
    for (const auto& entry : std::filesystem::directory_iterator{folder.path()})
        order.push_back(entry.path().filename().string());

    const std::vector<DirectoryEntry> entries = FileFactsReader::contentsOfDirectory(folder.url());

    ASSERT_EQ(entries.size(), order.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        ASSERT_EQ(entries[i].name, order[i]);
        if (entries[i].name == "folder")
            continue;
        ASSERT_TRUE(entries[i].facts.isRegularFile);
        const double number = std::stod(entries[i].name.substr(4));
        ASSERT_EQ(entries[i].facts.modified, Date{Seconds{number}});
    }
}

TEST(FileFacts, FilesThatVanishMeanwhileAreLeftOut)
{
    const TemporaryFolder folder;
    constexpr int count = 3'000;
    for (int i = 0; i < count; ++i)
        folder.write(std::to_string(i), "");
    folder.write("stays", "");
    std::atomic<bool> isRemoving{true};
    std::thread remover{[&] {
        for (int i = 0; i < count; ++i)
            ::unlink(folder.path(std::to_string(i)).c_str());
        isRemoving = false;
    }};
    bool alwaysThere = true;
    while (isRemoving) {
        const auto entries = FileFactsReader::contentsOfDirectory(folder.url());
        bool isThere = false;
        for (const DirectoryEntry& entry : entries)
            isThere = isThere || (entry.name == "stays" && entry.facts.isRegularFile);
        alwaysThere = alwaysThere && isThere;
    }
    remover.join();
    EXPECT_TRUE(alwaysThere);
    EXPECT_EQ(FileFactsReader::contentsOfDirectory(folder.url()).size(), 1U);
}

TEST(FileFacts, ManyFilesWhoseFactsCannotBeReadFailWithOneOfThem)
{
    for (const int count : {1, 3'000}) {
        const TemporaryFolder folder;
        const ScopedOrdinaryUser user{folder};
        for (int i = 0; i < count; ++i)
            folder.write("in/" + std::to_string(i), "");
        // Listed, but not searched.
        std::filesystem::permissions(folder.path("in"), std::filesystem::perms{0444});
        try {
            FileFactsReader::contentsOfDirectory(folder.url("in"));
            ADD_FAILURE() << "nothing was thrown for " << count;
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.code(), std::errc::permission_denied);
            EXPECT_EQ(error.path1().parent_path(), folder.path("in"));
            EXPECT_NE(error.path1().filename(), "");
        }
    }
}

TEST(FileFacts, AFolderThatMayNotBeReadCannotBeListed)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    folder.write("in/file", "");
    std::filesystem::permissions(folder.path("in"), std::filesystem::perms{0111});
    try {
        FileFactsReader::contentsOfDirectory(folder.url("in"));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::permission_denied);
        EXPECT_EQ(error.path1(), folder.path("in"));
    }
}

TEST(FileFacts, TheScreenCaptureFlagIsReadOnlyWhereItMatters)
{
    const TemporaryFolder folder;
    for (const char* name : {"wanted", "unwanted"})
        setAttribute(folder.write(name, ""), plainFlag, "1");
    folder.write("wanted without", "");

    const auto entries = FileFactsReader::contentsOfDirectory(
        folder.url(), [](std::string_view name) { return name.starts_with("wanted"); });

    ASSERT_EQ(entries.size(), 3U);
    for (const DirectoryEntry& entry : entries) {
        FileFacts expected = FileFactsReader::facts(folder.url(entry.name));
        expected.isScreenCapture = entry.name == "wanted";
        EXPECT_EQ(entry.facts, expected) << entry.name;
    }
}

}  // namespace tidemark
