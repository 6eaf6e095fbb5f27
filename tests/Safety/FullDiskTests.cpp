#include "LoopMount.h"
#include "PrivateMounts.h"
#include "SafetyFixture.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

using testing::AnyOf;
using testing::HasSubstr;

/// Files that are copied from one file system to the other, and back.
Scenario across(const char* command)
{
    for (const Scenario& scenario : everyScenario()) {
        if (scenario.name == "AcrossFileSystems")
            return std::string_view{command} == "undo" ? scenario.undone() : scenario;
    }
    throw std::logic_error{"no such scenario"};
}

/// Fills the file system that `folder` is on, but for so many bytes.
void fillUp(const std::string& folder, std::uintmax_t room)
{
    constexpr std::uintmax_t block = 4096;
    std::ofstream filler{folder + "/filler.bin", std::ios::binary};
    const std::string piece(block, 'x');
    while (fs::space(folder).available > room && filler.write(piece.data(), block).flush()) { }
    filler.close();
}

/// How room is made scarce for a while, and how much of it is tried.
struct Shortage {
    std::function<void(std::uintmax_t room)> begin;
    std::function<void()> end;
    std::uintmax_t most;
    std::uintmax_t step;  ///< Of the short form; the long one takes a third.
    std::string reason;  ///< What is told, at least once.
    std::string counted;
};

Shortage fullDisk(const std::string& full)
{
    return {.begin = [full](std::uintmax_t room) { fillUp(full, room); },
        .end = [full] { fs::remove(full + "/filler.bin"); },
        .most = std::uintmax_t{48} * 1024,
        .step = std::uintmax_t{12} * 1024,
        .reason = "No space left on device",
        .counted = "full disks"};
}

/// What the work came to. Nothing may be lost, whatever there is room for.
TracedOutcome workWithoutLoss(World& world, const Shortage& shortage, std::uintmax_t room)
{
    SCOPED_TRACE(
        testing::Message() << world.scenario().name << " with room for " << room << " bytes");
    world.reset();
    shortage.begin(room);
    TracedOutcome outcome = world.run([](const TracedCall&) { return CallVerdict{}; });
    shortage.end();
    EXPECT_FALSE(outcome.didHang);
    EXPECT_THAT(outcome.status, AnyOf(0, 1)) << outcome.error;
    if (outcome.status == 0)
        EXPECT_TRUE(world.isDone());
    else
        EXPECT_THAT(outcome.error, AnyOf(HasSubstr(world.place()), HasSubstr("~/")));
    const Leftovers leftovers = world.check();
    world.bringBack(leftovers, false);
    return outcome;
}

/// Every amount of room from none to plenty.
void tryEveryRoom(const std::string& place, const Shortage& shortage)
{
    const std::uintmax_t step = wantsLongTests() ? shortage.step / 3 : shortage.step;
    std::size_t tried = 0;
    std::size_t done = 0;
    std::size_t told = 0;
    for (const char* command : {"sweep", "undo"}) {
        World world{place, across(command)};
        for (std::uintmax_t room = 0; room <= shortage.most; room += step) {
            const TracedOutcome outcome = workWithoutLoss(world, shortage, room);
            done += outcome.status == 0 ? 1U : 0U;
            told += outcome.error.find(shortage.reason) != std::string::npos ? 1U : 0U;
            ++tried;
        }
    }
    EXPECT_GT(done, 0U) << "there never was enough room";
    EXPECT_GT(told, 0U) << "there always was enough room";
    printCounts(std::to_string(tried) + ' ' + shortage.counted);
}

TEST(FullDisk, ATmpfsToMoveToLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder place;
    place.makeFolder("disk");
    testWithPrivateMounts([&] {
        mountMemory(place.path("disk"), "size=256k");
        tryEveryRoom(place.path(), fullDisk(place.path("disk")));
    });
}

TEST(FullDisk, ATmpfsWithTheJournalLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder outside;
    outside.makeFolder("small");
    testWithPrivateMounts([&] {
        mountMemory(outside.path("small"), "size=256k");
        const std::string place = outside.path("small/place");
        fs::create_directories(place + "/disk");
        mountMemory(place + "/disk");
        tryEveryRoom(place, fullDisk(place));
    });
}

constexpr const char* plainExt4 = "mkfs.ext4 -q -O ^has_journal -m 0";
constexpr const char* whyNoExt4 =
    "no file system in a file can be mounted here: not root, or no loop device";

TEST(FullDisk, AnExt4WithTheJournalLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder outside;
    const LoopMount mount{outside, outside.path("mnt"), "4M", plainExt4};
    if (!mount.isMounted())
        GTEST_SKIP() << whyNoExt4;
    const std::string place = mount.path() + "/place";
    fs::create_directories(place + "/disk");
    tryEveryRoom(place, fullDisk(place));
}

TEST(FullDisk, AnExt4ToMoveToLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder image;
    const TemporaryFolder place;
    const LoopMount mount{image, place.path("disk"), "4M", plainExt4};
    if (!mount.isMounted())
        GTEST_SKIP() << whyNoExt4;
    tryEveryRoom(place.path(), fullDisk(mount.path()));
}

/// A subvolume may hold no more than `room` bytes. Btrfs sets whole nodes aside for what a call may come to, so
/// that quite some room is needed for the smallest file.
Shortage quota(const std::string& mount, const std::string& subvolume)
{
    // By its number, from outside: through its path the command would itself be held to the limit.
    const std::string group = " 0/$(btrfs inspect-internal rootid " + subvolume + ") ";
    const auto limitTo = [=](const std::string& size) {
        if (!succeeds("btrfs qgroup limit " + size + group + mount))
            throw std::runtime_error{"cannot limit " + subvolume};
    };
    return {.begin = [=](std::uintmax_t room) { limitTo(std::to_string(room)); },
        .end = [=] { limitTo("none"); },
        .most = std::uintmax_t{96} * 1024,
        .step = std::uintmax_t{24} * 1024,
        .reason = "Disk quota exceeded",
        .counted = "quotas"};
}

/// On btrfs, since its quotas are part of it: kernels are built without those that the other file systems
/// share. A file cannot be renamed from one of its subvolumes to the other.
void tryQuotasOf(const std::string& subvolume)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder outside;
    const LoopMount mount{outside, outside.path("mnt"), "128M", "mkfs.btrfs -q -n 4096"};
    if (!mount.isMounted() || !succeeds("btrfs quota enable " + mount.path()))
        GTEST_SKIP()
            << "no btrfs with quotas in a file can be mounted here: not root, no loop device, "
               "or a kernel without btrfs";
    const std::string place = mount.path() + "/place";
    for (const std::string& path : {place, place + "/disk"})
        ASSERT_TRUE(succeeds("btrfs subvolume create " + path));
    tryEveryRoom(place, quota(mount.path(), mount.path() + '/' + subvolume));
}

TEST(FullDisk, AQuotaWhereFilesAreMovedToLosesNothing)
{
    tryQuotasOf("place/disk");
}

TEST(FullDisk, AQuotaWhereTheJournalIsLosesNothing)
{
    tryQuotasOf("place");
}

}  // namespace
}  // namespace tidemark
