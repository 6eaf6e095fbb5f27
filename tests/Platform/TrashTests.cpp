#include "Trash.h"

#include "Date.h"
#include "Folders.h"
#include "LinuxFileManager.h"
#include "LoopMount.h"
#include "PrivateMounts.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"
#include "TrashRecord.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <functional>
#include <regex>
#include <sstream>

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;

static FileURL moveIn(const Trash& trash, const FileURL& url)
{
    const HeldFolder folder = Folders::hold(url.parent());
    return trash.moveIn({folder, url});
}

class TrashTest : public testing::Test {
protected:
    TemporaryFolder m_folder;
    Trash m_trash{m_folder.url("home/Trash")};

    std::string record(std::string_view name) const
    {
        return m_folder.read("home/Trash/info/" + std::string{name} + ".trashinfo");
    }

    int errorOf(const FileURL& url) const
    {
        try {
            moveIn(m_trash, url);
        } catch (const std::filesystem::filesystem_error& error) {
            return error.code().value();
        }
        return 0;
    }
};

static std::string line(const std::string& text, int number)
{
    std::istringstream stream{text};
    std::string line;
    for (int i = 0; i <= number; ++i)
        std::getline(stream, line);
    return line;
}

static std::string userID()
{
    return std::to_string(::geteuid());
}

static mode_t modeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST_F(TrashTest, AFileLiesThereWithItsRecord)
{
    const FileURL file = m_folder.write("in/photo.jpg", "content");
    const FileURL place = moveIn(m_trash, file);
    EXPECT_EQ(place, m_folder.url("home/Trash/files/photo.jpg"));
    EXPECT_FALSE(m_folder.holds("in/photo.jpg"));
    EXPECT_EQ(m_folder.read("home/Trash/files/photo.jpg"), "content");

    const std::string text = record("photo.jpg");
    EXPECT_EQ(line(text, 0), "[Trash Info]");
    EXPECT_EQ(line(text, 1), "Path=" + file.path());
    EXPECT_TRUE(std::regex_match(
        line(text, 2), std::regex{R"(DeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d)"}))
        << text;
    EXPECT_EQ(std::ranges::count(text, '\n'), 3);
}

TEST_F(TrashTest, ItIsForTheUserAlone)
{
    moveIn(m_trash, m_folder.write("file", ""));
    for (const char* path : {"home", "home/Trash", "home/Trash/files", "home/Trash/info"})
        EXPECT_EQ(modeOf(m_folder.path(path)), 0700U) << path;
    EXPECT_EQ(modeOf(m_folder.path("home/Trash/info/file.trashinfo")), 0600U);
}

TEST_F(TrashTest, TheDateIsLocalTime)
{
    // Far enough from UTC that the two cannot be mistaken for each other.
    const ScopedEnvironment zone{"TZ", "Pacific/Kiritimati"};
    const auto seconds = [] { return ::time(nullptr); };
    const std::int64_t before = seconds();
    moveIn(m_trash, m_folder.write("file", ""));
    const std::int64_t after = seconds();
    const std::string date = line(record("file"), 2).substr(std::strlen("DeletionDate="));
    const std::optional<Date> moment = parseISO8601(date + "+14:00");
    ASSERT_TRUE(moment) << date;
    EXPECT_GE(moment->time_since_epoch().count(), static_cast<double>(before));
    EXPECT_LE(moment->time_since_epoch().count(), static_cast<double>(after));
}

TEST_F(TrashTest, TheOriginIsPercentEncoded)
{
    struct Row {
        std::string name;
        std::string encoded;
    };
    const Row rows[] = {{"100%", "100%25"}, {"%41", "%2541"}, {"two words", "two%20words"},
        {"new\nline", "new%0Aline"}, {"ä", "%C3%A4"}, {"\U0001F30A", "%F0%9F%8C%8A"},
        {"a=b", "a%3Db"}, {"\xFF", "%FF"}, {"[Trash Info]", "%5BTrash%20Info%5D"}};
    for (const Row& row : rows) {
        const FileURL place = moveIn(m_trash, m_folder.write(row.name, row.name));
        EXPECT_EQ(place.lastPathComponent(), row.name);
        EXPECT_EQ(line(record(row.name), 1), "Path=" + m_folder.path(row.encoded));
        EXPECT_EQ(m_folder.read("home/Trash/files/" + row.name), row.name);
    }
}

TEST_F(TrashTest, TheOriginIsToldWithoutLinksInIt)
{
    m_folder.write("real/file", "content");
    m_folder.makeLink("link", "real");
    moveIn(m_trash, m_folder.url("link/../link/file"));
    EXPECT_EQ(line(record("file"), 1), "Path=" + m_folder.path("real/file"));
}

TEST_F(TrashTest, LinksGoThereThemselves)
{
    m_folder.write("target", "content");
    m_folder.makeLink("link", "target");
    m_folder.makeLink("broken", "nowhere");
    for (const char* name : {"link", "broken"}) {
        moveIn(m_trash, m_folder.url(name));
        EXPECT_FALSE(m_folder.holds(name));
        EXPECT_TRUE(
            std::filesystem::is_symlink(m_folder.path("home/Trash/files/" + std::string{name})));
    }
    EXPECT_EQ(m_folder.read("target"), "content");
}

TEST_F(TrashTest, AFolderGoesThereWithItsContent)
{
    m_folder.write("folder/file", "content");
    moveIn(m_trash, m_folder.url("folder"));
    EXPECT_EQ(m_folder.read("home/Trash/files/folder/file"), "content");
    EXPECT_EQ(line(record("folder"), 1), "Path=" + m_folder.path("folder"));
}

TEST_F(TrashTest, FilesOfOneNameAreNumbered)
{
    for (const char* content : {"one", "two", "three"})
        moveIn(m_trash, m_folder.write("a.tar.gz", content));
    EXPECT_THAT(
        m_folder.names("home/Trash/files"), ElementsAre("a.tar 2.gz", "a.tar 3.gz", "a.tar.gz"));
    EXPECT_THAT(m_folder.names("home/Trash/info"),
        ElementsAre("a.tar 2.gz.trashinfo", "a.tar 3.gz.trashinfo", "a.tar.gz.trashinfo"));
    EXPECT_EQ(m_folder.read("home/Trash/files/a.tar 3.gz"), "three");
}

TEST_F(TrashTest, AStaleRecordIsLeftAlone)
{
    m_folder.write("home/Trash/info/file.trashinfo", "stale");
    moveIn(m_trash, m_folder.write("file", "content"));
    EXPECT_EQ(record("file"), "stale");
    EXPECT_EQ(m_folder.read("home/Trash/files/file 2"), "content");
    EXPECT_EQ(line(record("file 2"), 1), "Path=" + m_folder.path("file"));
}

TEST_F(TrashTest, AFileWithoutRecordIsNotReplaced)
{
    m_folder.write("home/Trash/files/file", "orphan");
    moveIn(m_trash, m_folder.write("file", "content"));
    EXPECT_EQ(m_folder.read("home/Trash/files/file"), "orphan");
    EXPECT_EQ(m_folder.read("home/Trash/files/file 2"), "content");
    EXPECT_THAT(m_folder.names("home/Trash/info"), ElementsAre("file 2.trashinfo"));
}

TEST_F(TrashTest, ARecordThatIsALinkIsNotWrittenThrough)
{
    m_folder.makeFolder("home/Trash/info");
    m_folder.makeLink("home/Trash/info/file.trashinfo", m_folder.path("victim"));
    moveIn(m_trash, m_folder.write("file", "content"));
    EXPECT_FALSE(m_folder.holds("victim"));
    EXPECT_EQ(m_folder.read("home/Trash/files/file 2"), "content");
}

TEST_F(TrashTest, LongNamesAreShortenedBetweenCharacters)
{
    const std::string wave = "\U0001F30A";
    std::string name(3, 'x');
    while (name.size() + wave.size() + 4 <= 255)
        name += wave;
    name += ".jpg";
    for (int i = 0; i < 2; ++i) {
        // No room for a temporary name beside this one.
        const FileURL file = m_folder.write(name, "content");
        const FileURL place = moveIn(m_trash, file);
        const std::string_view given = place.lastPathComponent();
        EXPECT_LE(given.size(), 245U);
        EXPECT_TRUE(given.ends_with(i == 0 ? wave + ".jpg" : wave + " 2.jpg")) << given;
        EXPECT_TRUE(line(record(given), 1).ends_with(".jpg"));
        EXPECT_EQ(FileURL::fromString("file://" + line(record(given), 1).substr(5)), file);
    }
}

TEST(TrashRecord, TellsTheClockOfAnyMomentAndZone)
{
    struct Row {
        const char* zone;
        double moment;
        const char* date;
    };
    for (const Row& row : {
             Row{"UTC", 1'700'000'000.75, "2023-11-14T22:13:20"},
             Row{"UTC", -1, "1969-12-31T23:59:59"},
             // Its clocks were not whole minutes away from UTC.
             Row{"Africa/Monrovia", 0, "1969-12-31T23:15:30"},
         }) {
        const ScopedEnvironment zone{"TZ", row.zone};
        EXPECT_EQ(line(TrashRecord::text("a", Date{Seconds{row.moment}}), 2),
            std::string{"DeletionDate="} + row.date);
    }
}

TEST(TrashRecord, NamesFitWithTheirRecordIntoAFileName)
{
    for (const std::string& name : {std::string(255, 'x'), std::string(255, '\x80'),
             std::string("a.") + std::string(253, 'x'), '.' + std::string(254, 'x'),
             std::string(250, 'x') + ".jpg", ".$" + std::string(253, '\x80')}) {
        for (const int number : {1, 2, 10'000}) {
            const std::string given = TrashRecord::nameInTrash(name, number);
            EXPECT_LE(given.size(), 245U);
            EXPECT_GE(given.size(), 200U);
            EXPECT_EQ(given[0], name[0]);
        }
    }
    EXPECT_EQ(TrashRecord::nameInTrash(".bashrc", 2), ".bashrc 2");
    EXPECT_EQ(TrashRecord::nameInTrash("README", 2), "README 2");
    EXPECT_EQ(TrashRecord::nameInTrash("a.", 2), "a. 2");
}

TEST_F(TrashTest, ARecordIsRemovedWhenTheMoveFails)
{
    const TemporaryFolder folder;
    const ScopedOrdinaryUser user{folder};
    const FileURL file = folder.write("locked/file", "content");
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms{0555});
    const Trash trash{folder.url("Trash")};
    EXPECT_THROW(moveIn(trash, file), std::filesystem::filesystem_error);
    EXPECT_EQ(folder.read("locked/file"), "content");
    EXPECT_THAT(folder.names("Trash/info"), IsEmpty());
    EXPECT_THAT(folder.names("Trash/files"), IsEmpty());
}

TEST_F(TrashTest, AFileStaysWhereNoTrashCanBeMade)
{
    const FileURL file = m_folder.write("file", "content");
    m_folder.write("home", "in the way");
    EXPECT_EQ(errorOf(file), ENOTDIR);
    EXPECT_EQ(m_folder.read("file"), "content");
}

TEST_F(TrashTest, WhatIsInATrashOrHoldsOneIsRefused)
{
    moveIn(m_trash, m_folder.write("file", "content"));
    m_folder.write(".Trash-" + userID() + "/files/a", "a");
    m_folder.write(".Trash/" + userID() + "/files/b", "b");
    m_folder.makeLink("link", "home/Trash/files");
    for (const std::string& path : {std::string{"home/Trash/files/file"},
             std::string{"home/Trash/files"}, std::string{"home/Trash/info/file.trashinfo"},
             std::string{"home/Trash"}, std::string{"home"}, std::string{"link/file"},
             ".Trash-" + userID(), ".Trash-" + userID() + "/files/a",
             ".Trash/" + userID() + "/files/b", std::string{".Trash"}})
        EXPECT_EQ(errorOf(m_folder.url(path)), EINVAL) << path;
    EXPECT_EQ(errorOf(FileURL{"/"}), EINVAL);
    EXPECT_EQ(errorOf(m_folder.url("home/..")), EINVAL);
    EXPECT_EQ(m_folder.read("home/Trash/files/file"), "content");

    moveIn(m_trash, m_folder.url("link"));
    EXPECT_EQ(m_folder.read("home/Trash/files/file"), "content");
}

TEST_F(TrashTest, AFileStaysWhereTheTrashHasAPathThatNoJournalCanName)
{
    const FileURL file = m_folder.write("file", "content");
    const Trash trash{FileURL{m_folder.path("h\xff/Trash")}};
    try {
        moveIn(trash, file);
        ADD_FAILURE() << "it was trashed";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code().value(), EILSEQ);
    }
    EXPECT_EQ(m_folder.read("file"), "content");
}

TEST_F(TrashTest, WhatIsMissingCannotBeTrashed)
{
    EXPECT_EQ(errorOf(m_folder.url("none")), ENOENT);
    EXPECT_EQ(errorOf(m_folder.url("none/none")), ENOENT);
    EXPECT_FALSE(m_folder.holds("home/Trash/info/none.trashinfo"));
}

TEST_F(TrashTest, AFileThatComesOutTakesItsRecordAway)
{
    const ScopedHome home{m_folder.path("home")};
    LinuxFileManager files;
    const FileURL kept = *files.trashItem(m_folder.write("kept", ""));
    const FileURL place = *files.trashItem(m_folder.write("file", "content"));
    const std::string info = "home/.local/share/Trash/info";
    ASSERT_THAT(m_folder.names(info), ElementsAre("file.trashinfo", "kept.trashinfo"));

    m_folder.write("occupied", "");
    EXPECT_THROW(
        files.moveItem(place, m_folder.url("occupied")), std::filesystem::filesystem_error);
    EXPECT_THAT(m_folder.names(info), ElementsAre("file.trashinfo", "kept.trashinfo"));

    files.moveItem(place, m_folder.url("back"));
    EXPECT_THAT(m_folder.names(info), ElementsAre("kept.trashinfo"));
    EXPECT_EQ(m_folder.read("back"), "content");
}

TEST(Trash, KeepsTheRecordsThatALinkWhichCameLaterLeadsTo)
{
    struct Row {
        const char* swapped;
        const char* record;
    };
    for (const Row& row : {Row{"Trash/info", "foreign/file.trashinfo"},
             Row{"Trash/files", "Trash/info/file.trashinfo"},
             Row{"Trash", "foreign/info/file.trashinfo"}}) {
        SCOPED_TRACE(row.swapped);
        const TemporaryFolder folder;
        const Trash trash{folder.url("Trash")};
        const FileURL place = moveIn(trash, folder.write("file", "content"));
        const HeldFolder files = Folders::hold(place.parent());
        std::filesystem::rename(place.path(), folder.path("back"));

        std::filesystem::rename(folder.path(row.swapped), folder.path("away"));
        folder.makeFolder("foreign/files");
        folder.write(row.record, "foreign");
        folder.makeLink(row.swapped, folder.path("foreign"));
        trash.removeRecord({files, place});
        EXPECT_TRUE(folder.holds(row.record));
    }
}

TEST_F(TrashTest, AFileThatComesOutOfALinkedTrashTakesItsRecordAway)
{
    const ScopedHome home{m_folder.path("home")};
    m_folder.makeFolder("real");
    m_folder.makeFolder("elsewhere");
    m_folder.makeFolder("home/.local/share");
    m_folder.makeLink("home/.local/share/Trash", m_folder.path("real"));
    m_folder.makeLink("real/files", m_folder.path("elsewhere"));
    LinuxFileManager files;
    const FileURL place = *files.trashItem(m_folder.write("file", "content"));
    ASSERT_THAT(m_folder.names("real/info"), ElementsAre("file.trashinfo"));
    files.moveItem(place, m_folder.url("back"));
    EXPECT_THAT(m_folder.names("real/info"), IsEmpty());
}

TEST_F(TrashTest, AFolderThatOnlyLooksLikeATrashKeepsItsRecords)
{
    const ScopedHome home{m_folder.path("home")};
    LinuxFileManager files;
    const FileURL file = m_folder.write("mine/files/file", "content");
    m_folder.write("mine/info/file.trashinfo", "my own");
    files.moveItem(file, m_folder.url("file"));
    EXPECT_EQ(m_folder.read("mine/info/file.trashinfo"), "my own");
}

TEST_F(TrashTest, TheHomeTrashFollowsTheEnvironment)
{
    const FileURL file = m_folder.write("file", "content");
    const ScopedEnvironment home{"HOME", m_folder.path("h")};
    {
        const ScopedEnvironment data{"XDG_DATA_HOME", m_folder.path("d")};
        EXPECT_EQ(moveIn(Trash{}, file), m_folder.url("d/Trash/files/file"));
    }
    const ScopedEnvironment data{"XDG_DATA_HOME", "relative"};
    m_folder.write("file", "content");
    EXPECT_EQ(moveIn(Trash{}, file), m_folder.url("h/.local/share/Trash/files/file"));
}

class TrashOnAnotherFileSystem : public TrashTest {
protected:
    /// Runs `body` with another file system at "disk", where "disk/in/file" lies.
    void withDisk(const std::function<void()>& body)
    {
        testWithPrivateMounts([this, &body] {
            mountMemory(m_folder.makeFolder("disk").path());
            m_file = m_folder.write("disk/in/a b", "content");
            body();
        });
    }

    /// In the child process the user is root of its own namespace.
    static std::string personal() { return "disk/.Trash-" + userID(); }
    static std::string shared() { return "disk/.Trash/" + userID(); }

    void makeSharedTrash(mode_t mode)
    {
        m_folder.makeFolder("disk/.Trash");
        ASSERT_EQ(::chmod(m_folder.path("disk/.Trash").c_str(), mode), 0);
    }

    FileURL m_file;
};

TEST_F(TrashOnAnotherFileSystem, AFileStaysOnItWithARelativeOrigin)
{
    withDisk([this] {
        EXPECT_EQ(moveIn(m_trash, m_file), m_folder.url(personal() + "/files/a b"));
        EXPECT_EQ(modeOf(m_folder.path(personal())), 0700U);
        EXPECT_EQ(line(m_folder.read(personal() + "/info/a b.trashinfo"), 1), "Path=in/a%20b");
        EXPECT_FALSE(m_folder.holds("home"));
    });
}

TEST_F(TrashOnAnotherFileSystem, TheSharedTrashIsPreferred)
{
    withDisk([this] {
        makeSharedTrash(01777);
        EXPECT_EQ(moveIn(m_trash, m_file), m_folder.url(shared() + "/files/a b"));
        EXPECT_EQ(line(m_folder.read(shared() + "/info/a b.trashinfo"), 1), "Path=in/a%20b");
        EXPECT_EQ(modeOf(m_folder.path(shared())), 0700U);
    });
}

TEST_F(TrashOnAnotherFileSystem, ASharedTrashThatIsNotStickyIsNotTrusted)
{
    withDisk([this] {
        makeSharedTrash(0777);
        EXPECT_EQ(moveIn(m_trash, m_file), m_folder.url(personal() + "/files/a b"));
        EXPECT_THAT(m_folder.names("disk/.Trash"), IsEmpty());
    });
}

TEST_F(TrashOnAnotherFileSystem, ASharedTrashThatIsALinkIsNotTrusted)
{
    withDisk([this] {
        m_folder.makeFolder("disk/elsewhere");
        ASSERT_EQ(::chmod(m_folder.path("disk/elsewhere").c_str(), 01777), 0);
        m_folder.makeLink("disk/.Trash", "elsewhere");
        EXPECT_EQ(moveIn(m_trash, m_file), m_folder.url(personal() + "/files/a b"));
        EXPECT_THAT(m_folder.names("disk/elsewhere"), IsEmpty());
    });
}

TEST_F(TrashOnAnotherFileSystem, AUsersFolderThatIsALinkIsNotTrusted)
{
    withDisk([this] {
        makeSharedTrash(01777);
        m_folder.makeFolder("disk/elsewhere");
        m_folder.makeLink(shared(), "../elsewhere");
        m_folder.makeLink(personal(), "elsewhere");
        EXPECT_EQ(moveIn(m_trash, m_file), m_folder.url("home/Trash/files/a b"));
        EXPECT_THAT(m_folder.names("disk/elsewhere"), IsEmpty());
        EXPECT_EQ(line(record("a b"), 1), "Path=" + m_folder.path("disk/in/a%20b"));
        EXPECT_EQ(m_folder.read("home/Trash/files/a b"), "content");
        EXPECT_FALSE(m_folder.holds("disk/in/a b"));
    });
}

TEST_F(TrashOnAnotherFileSystem, AReadOnlyOneKeepsItsFiles)
{
    withDisk([this] {
        makeReadOnly(m_folder.path("disk"));
        EXPECT_EQ(errorOf(m_file), EROFS);
        EXPECT_EQ(m_folder.read("disk/in/a b"), "content");
        EXPECT_THAT(m_folder.names("home/Trash/info"), IsEmpty());
        EXPECT_THAT(m_folder.names("home/Trash/files"), IsEmpty());
    });
}

TEST_F(TrashOnAnotherFileSystem, AFullOneKeepsItsFiles)
{
    testWithPrivateMounts([this] {
        mountMemory(m_folder.makeFolder("disk").path(), "nr_inodes=6");
        const FileURL file = m_folder.write("disk/file", "content");
        // Room for the trash's three folders, but not for a record.
        m_folder.write("disk/filler", "");
        EXPECT_EQ(errorOf(file), ENOSPC);
        EXPECT_EQ(m_folder.read("disk/file"), "content");
        EXPECT_THAT(m_folder.names(personal() + "/files"), IsEmpty());
        EXPECT_THAT(m_folder.names(personal() + "/info"), IsEmpty());
    });
}

TEST_F(TrashOnAnotherFileSystem, ASecondMountOfTheSameDiskHasATrashOfItsOwn)
{
    testWithPrivateMounts([this] {
        m_folder.write("real/in/file", "content");
        m_folder.makeFolder("again");
        mountAgain(m_folder.path("real"), m_folder.path("again"));
        // The same device, and yet the kernel renames nothing across the mounts.
        const FileURL place = moveIn(m_trash, m_folder.url("again/in/file"));
        EXPECT_EQ(place, m_folder.url("again/.Trash-" + userID() + "/files/file"));
        EXPECT_THAT(m_folder.names("again/in"), IsEmpty());
        EXPECT_EQ(m_folder.read("again/.Trash-" + userID() + "/files/file"), "content");
        EXPECT_THAT(m_folder.names("home/Trash/info"), IsEmpty());
    });
}

TEST_F(TrashTest, ASubvolumeHasNoneOfItsOwn)
{
    const LoopMount mount{m_folder, m_folder.path("mnt"), "128M", "mkfs.btrfs -q"};
    if (!mount.isMounted() || !succeeds("btrfs subvolume create " + mount.path() + "/sub"))
        GTEST_SKIP() << "no btrfs in a file can be mounted here: not root, no loop device, or a "
                        "kernel without btrfs";
    const FileURL file = m_folder.write("mnt/sub/file", "content");
    const FileURL place = moveIn(Trash{m_folder.url("mnt/home/Trash")}, file);
    // Another file system, and yet not mounted there: where other programs look for trashes it is not.
    EXPECT_EQ(place, m_folder.url("mnt/home/Trash/files/file"));
    EXPECT_EQ(m_folder.read("mnt/home/Trash/files/file"), "content");
    EXPECT_EQ(line(m_folder.read("mnt/home/Trash/info/file.trashinfo"), 1), "Path=" + file.path());
    EXPECT_THAT(m_folder.names("mnt/sub"), IsEmpty());
}

TEST_F(TrashOnAnotherFileSystem, ATrashThatBelongsToAnotherUserIsNotTrusted)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make a folder for another user";
    constexpr uid_t nobody = 65534;
    m_folder.write("real/in/file", "content");
    // Who owns it reads and takes what lies there, however open it is.
    const std::string foreign = m_folder.makeFolder("real/.Trash-0").path();
    ASSERT_EQ(::chmod(foreign.c_str(), 0777), 0);
    ASSERT_EQ(::chown(foreign.c_str(), nobody, nobody), 0);
    m_folder.makeFolder("again");
    testWithPrivateMounts([this] {
        mountAgain(m_folder.path("real"), m_folder.path("again"));
        EXPECT_EQ(
            moveIn(m_trash, m_folder.url("again/in/file")), m_folder.url("home/Trash/files/file"));
        EXPECT_THAT(m_folder.names("again/.Trash-0"), IsEmpty());
    });
}

TEST_F(TrashOnAnotherFileSystem, AFileThatComesOutOfItsTrashTakesTheRecordAway)
{
    withDisk([this] {
        const ScopedHome home{m_folder.path("home")};
        LinuxFileManager files;
        const FileURL place = *files.trashItem(m_file);
        ASSERT_THAT(m_folder.names(personal() + "/info"), ElementsAre("a b.trashinfo"));
        files.moveItem(place, m_file);
        EXPECT_THAT(m_folder.names(personal() + "/info"), IsEmpty());
        EXPECT_EQ(m_folder.read("disk/in/a b"), "content");
    });
}

}  // namespace tidemark
