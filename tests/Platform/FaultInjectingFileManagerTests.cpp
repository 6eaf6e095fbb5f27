#include "FaultInjectingFileManager.h"

#include "InMemoryFileManager.h"

#include <gtest/gtest.h>

#include <functional>

namespace tidemark {

static std::errc errorOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::filesystem::filesystem_error& error) {
        return static_cast<std::errc>(error.code().value());
    }
    return std::errc{};
}

TEST(FaultInjectingFileManager, PassesCallsOn)
{
    InMemoryFileManager disk{{"/a", "A"}};
    FaultInjectingFileManager files{disk};
    files.moveItem(FileURL{"/a"}, FileURL{"/b"});
    EXPECT_EQ(files.readFile(FileURL{"/b"}, 9), "A");
    EXPECT_EQ(files.callCount(), 4);  // both folders are held first
    EXPECT_EQ(files.callCount(FileCall::moveItem), 1);
    EXPECT_FALSE(files.faultFired());
}

TEST(FaultInjectingFileManager, TheChosenCallFailsWithoutEffect)
{
    InMemoryFileManager disk{{"/a", "A"}};
    FaultInjectingFileManager files{disk, failAt(1, std::errc::no_space_on_device)};
    EXPECT_TRUE(files.fileExists(FileURL{"/a"}));
    EXPECT_FALSE(files.faultFired());
    EXPECT_EQ(errorOf([&] { files.moveItem(FileURL{"/a"}, FileURL{"/b"}); }),
        std::errc::no_space_on_device);
    EXPECT_TRUE(files.faultFired());
    EXPECT_EQ(disk.content("/a"), "A");
    files.moveItem(FileURL{"/a"}, FileURL{"/b"});
    EXPECT_EQ(disk.content("/b"), "A");
}

TEST(FaultInjectingFileManager, AfterTheEffectOnlyTheReportIsLost)
{
    InMemoryFileManager disk{{"/a", "A"}};
    FaultInjectingFileManager files{
        disk, afterTheEffect(failEvery(FileCall::trashItem, std::errc::io_error))};
    EXPECT_EQ(errorOf([&] { files.trashItem(FileURL{"/a"}); }), std::errc::io_error);
    EXPECT_EQ(disk.content("/a"), std::nullopt);
    EXPECT_EQ(disk.content("/trash/files/a"), "A");
}

TEST(FaultInjectingFileManager, FaultsCanBeTiedToAKindANumberOrAPath)
{
    InMemoryFileManager disk{{"/a", "A"}, {"/b", "B"}};
    FaultInjectingFileManager files{disk,
        {failAt(FileCall::facts, 1, std::errc::io_error),
            failEvery(FileCall::readFile, FileURL{"/b"}, std::errc::permission_denied)}};
    const FileURL a{"/a"};
    const FileURL b{"/b"};
    EXPECT_EQ(errorOf([&] { files.fileExists(a); }), std::errc{});
    EXPECT_EQ(errorOf([&] { files.facts(a); }), std::errc{});
    EXPECT_EQ(errorOf([&] { files.facts(a); }), std::errc::io_error);
    EXPECT_EQ(errorOf([&] { files.facts(a); }), std::errc{});
    EXPECT_EQ(errorOf([&] { files.readFile(a, 9); }), std::errc{});
    EXPECT_EQ(errorOf([&] { files.readFile(b, 9); }), std::errc::permission_denied);
    files.setFaults({failAt(FileCall::requireListable, 1, std::errc::io_error)});
    EXPECT_EQ(errorOf([&] { files.requireListable(FileURL{"/"}); }), std::errc{});
    EXPECT_EQ(errorOf([&] { files.requireListable(FileURL{"/"}); }), std::errc::io_error);
    files.setFaults({});
    EXPECT_EQ(errorOf([&] { files.readFile(b, 9); }), std::errc{});
}

TEST(InMemoryFileManager, UnreadableFoldersAndFilesSaySo)
{
    InMemoryFileManager disk{{"/in/a", "A"}};
    disk.makeUnreadable("/in");
    EXPECT_EQ(
        errorOf([&] { disk.contentsOfDirectory(FileURL{"/in"}); }), std::errc::permission_denied);
    EXPECT_EQ(errorOf([&] { disk.requireListable(FileURL{"/in"}); }), std::errc::permission_denied);
    disk.makeAccessible("/in");
    disk.makeUnreadable("/in/a");
    EXPECT_EQ(
        errorOf([&] { disk.contentsOfDirectory(FileURL{"/in"}); }), std::errc::permission_denied);
    EXPECT_EQ(errorOf([&] { disk.requireListable(FileURL{"/in"}); }), std::errc{});
    EXPECT_EQ(errorOf([&] { disk.facts(FileURL{"/in/a"}); }), std::errc::permission_denied);
}

TEST(InMemoryFileManager, NothingChangesInAReadOnlyFolder)
{
    InMemoryFileManager disk{{"/in/a", "A"}, {"/out/b", "B"}};
    disk.makeReadOnly("/in");
    const auto tree = disk.tree();
    const FileURL inside{"/in/a"};
    for (const std::function<void()>& call : {
             std::function<void()>{[&] { disk.moveItem(inside, FileURL{"/out/a"}); }},
             std::function<void()>{[&] { disk.moveItem(FileURL{"/out/b"}, FileURL{"/in/b"}); }},
             std::function<void()>{[&] { disk.trashItem(inside); }},
             std::function<void()>{[&] { disk.createDirectory(FileURL{"/in/new"}); }},
             std::function<void()>{[&] { disk.writeAtomically(inside, {}); }},
         })
        EXPECT_EQ(errorOf(call), std::errc::permission_denied);
    EXPECT_EQ(disk.tree(), tree);
    EXPECT_EQ(disk.contentsOfEveryFile(), (std::multiset<std::string>{"A", "B"}));
}

TEST(InMemoryFileManager, TheTrashCanKeepItsPlaceToItself)
{
    InMemoryFileManager disk{{"/a", "A"}};
    disk.hideTrashLocation();
    EXPECT_EQ(disk.trashItem(FileURL{"/a"}), std::nullopt);
    EXPECT_EQ(disk.contentsOfEveryFile(), (std::multiset<std::string>{"A"}));
}

TEST(InMemoryFileManager, EveryFactCanBeSetUp)
{
    InMemoryFileManager disk{{"/a", "A"}};
    const Date date{Seconds{-1}};
    disk.setAllDates("/a", date);
    disk.setLastOpened("/a", std::nullopt);
    disk.setScreenCapture("/a");
    disk.setCloudStatus("/a", CloudStatus::notDownloaded);
    FileFacts expected{true, CloudStatus::notDownloaded, true, date, date, std::nullopt, date};
    EXPECT_EQ(disk.facts(FileURL{"/a"}), expected);
}

}  // namespace tidemark
