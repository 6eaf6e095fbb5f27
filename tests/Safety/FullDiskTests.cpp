#include "PrivateMounts.h"
#include "SafetyFixture.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

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

/// Whether the work was done. Nothing may be lost, whatever there is room for.
bool isDoneWithoutLoss(World& world, const std::string& full, std::uintmax_t room)
{
    SCOPED_TRACE(
        testing::Message() << world.scenario().name << " with room for " << room << " bytes");
    world.reset();
    fillUp(full, room);
    const TracedOutcome outcome = world.run([](const TracedCall&) { return CallVerdict{}; });
    fs::remove(full + "/filler.bin");
    EXPECT_FALSE(outcome.didHang);
    EXPECT_THAT(outcome.status, AnyOf(0, 1)) << outcome.error;
    if (outcome.status == 0)
        EXPECT_TRUE(world.isDone());
    else
        EXPECT_THAT(outcome.error, AnyOf(HasSubstr(world.place()), HasSubstr("~/")));
    const Leftovers leftovers = world.check();
    world.bringBack(leftovers, false);
    return outcome.status == 0;
}

/// Every amount of room from none to plenty, on the disk that is moved to and on the one with the journal.
void tryEveryRoom(const std::string& place, const std::string& full)
{
    constexpr std::uintmax_t most = 48 * 1024;
    const std::uintmax_t step = wantsLongTests() ? 4096 : 12 * 1024;
    std::size_t tried = 0;
    std::size_t done = 0;
    for (const char* command : {"sweep", "undo"}) {
        World world{place, across(command)};
        for (std::uintmax_t room = 0; room <= most; room += step) {
            done += isDoneWithoutLoss(world, full, room) ? 1U : 0U;
            ++tried;
        }
    }
    EXPECT_GT(done, 0U) << "there never was enough room";
    EXPECT_LT(done, tried) << "the disk never was full";
    printCounts(std::to_string(tried) + " full disks");
}

TEST(FullDisk, ATmpfsToMoveToLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder place;
    place.makeFolder("disk");
    testWithPrivateMounts([&] {
        mountMemory(place.path("disk"), "size=256k");
        tryEveryRoom(place.path(), place.path("disk"));
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
        tryEveryRoom(place, place);
    });
}

/// An ext4 file system in a file, mounted for everybody; only root may do that.
class LoopMount {
public:
    LoopMount(const TemporaryFolder& folder, std::string at)
        : m_at(std::move(at))
    {
        fs::create_directories(m_at);
        const std::string image = folder.path("image");
        const std::string quiet = " >/dev/null 2>&1";
        m_isMounted = ::geteuid() == 0 && run("truncate -s 4M " + image)
            && run("mkfs.ext4 -q -O ^has_journal -m 0 " + image + quiet)
            && run("mount -o loop " + image + ' ' + m_at + quiet);
    }
    ~LoopMount()
    {
        if (m_isMounted)
            ::umount2(m_at.c_str(), MNT_DETACH);
    }
    LoopMount(const LoopMount&) = delete;
    LoopMount& operator=(const LoopMount&) = delete;

    bool isMounted() const { return m_isMounted; }
    const std::string& path() const { return m_at; }

    static constexpr const char* whyNot =
        "no file system in a file can be mounted here: not root, or no loop device";

private:
    static bool run(const std::string& command) { return std::system(command.c_str()) == 0; }

    std::string m_at;
    bool m_isMounted = false;
};

TEST(FullDisk, AnExt4WithTheJournalLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder outside;
    const LoopMount mount{outside, outside.path("mnt")};
    if (!mount.isMounted())
        GTEST_SKIP() << LoopMount::whyNot;
    const std::string place = mount.path() + "/place";
    fs::create_directories(place + "/disk");
    tryEveryRoom(place, place);
}

TEST(FullDisk, AnExt4ToMoveToLosesNothing)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder image;
    const TemporaryFolder place;
    const LoopMount mount{image, place.path("disk")};
    if (!mount.isMounted())
        GTEST_SKIP() << LoopMount::whyNot;
    tryEveryRoom(place.path(), mount.path());
}

}  // namespace
}  // namespace tidemark
