#include "OtherProcess.h"
#include "SupportLock.h"
#include "WatchFixture.h"

#include <algorithm>
#include <ostream>

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Signal {
    const char* name;
    int number;

    friend void PrintTo(const Signal& signal, std::ostream* stream) { *stream << signal.name; }
};

class WatchCommandSignals : public WatchFixture, public testing::WithParamInterface<Signal> { };

INSTANTIATE_TEST_SUITE_P(Signals, WatchCommandSignals,
    testing::Values(
        Signal{"Interrupt", SIGINT}, Signal{"Terminate", SIGTERM}, Signal{"HangUp", SIGHUP}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST_P(WatchCommandSignals, EndItCleanly)
{
    fileMyPapers();
    WatchProcess process{watch()};
    process.readStart();

    EXPECT_EQ(process.end(GetParam().number), 0);

    EXPECT_TRUE(process.lines().back().ends_with("  Stopped")) << process.lines().back();
    EXPECT_EQ(complaints(), "");
    EXPECT_TRUE(SupportLock::tryAcquire(FileURL::directory(supportPath())));
    EXPECT_THAT(home().names("data/Tidemark"), ElementsAre("lock", "settings.json"));
}

TEST_P(WatchCommandSignals, EndASweepAfterTheFileItIsAt)
{
    constexpr int count = 1000;
    fileMyPapers();
    addPapers(count);
    const std::multiset<std::string> before = contents({"in"});
    WatchProcess process{watch()};
    process.readUntil("004.pdf -> ");

    EXPECT_EQ(process.end(GetParam().number), 0);

    EXPECT_TRUE(process.lines().back().ends_with("  Stopped"));
    const std::vector<std::string> moved = home().names("Filed");
    EXPECT_LT(moved.size(), count) << "the sweep was over before it could be ended";
    EXPECT_EQ(journaledNames(), moved);
    EXPECT_EQ(process.linesWith("  Filed  ").size(), moved.size());
    EXPECT_EQ(contents({"in", "Filed"}), before);
    EXPECT_EQ(run({"undo"}).status, 0);
    EXPECT_EQ(contents({"in"}), before);
    EXPECT_THAT(home().names("Filed"), IsEmpty());
}

class WatchCommandEnd : public WatchFixture { };

TEST_F(WatchCommandEnd, DoesNotComeWithTheTerminalsWhereThatIsIgnored)
{
    fileMyPapers();
    ProgramStart how = watch();
    how.arguments.insert(how.arguments.begin(), how.path);
    how.path = "/usr/bin/nohup";
    WatchProcess process{how};
    process.readStart();

    process.signal(SIGHUP);
    home().write("in/a.pdf", "A");
    process.readUntil("a.pdf -> ~/Filed/a.pdf");

    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandEnd, ComesWhenNobodyReadsTheOutputAnyMore)
{
    fileMyPapers();
    WatchProcess process{watch()};
    process.readStart();

    process.stopReading();
    home().write("in/a.pdf", "A");

    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(contents({"in", "Filed"}), std::multiset<std::string>{"A"});
    EXPECT_EQ(complaints(), "tidemarkctl: cannot write to standard output: Broken pipe\n");
    EXPECT_TRUE(SupportLock::tryAcquire(FileURL::directory(supportPath())));
}

TEST_F(WatchCommandEnd, ComesBeforeTheStartIsPrintedWhereNobodyReads)
{
    fileMyPapers();
    addPapers(20);
    const std::multiset<std::string> before = contents({"in"});
    WatchProcess process{watch()};

    process.stopReading();

    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(contents({"in", "Filed"}), before);
    EXPECT_EQ(journaledNames().size(), contents({"Filed"}).size());
}

TEST_F(WatchCommandEnd, DoesNotWaitForAReaderThatReadsNoMore)
{
    constexpr int count = 300;
    fileMyPapers();
    addPapers(count);
    home().makeFolder("Filed");
    FileEvents filed{home().path("Filed")};
    WatchProcess process{watch()};
    process.shrinkOutput();
    filed.waitFor("299.pdf");

    EXPECT_EQ(run({"pause"}).status, 0);
    process.signal(SIGTERM);
    EXPECT_EQ(process.waitWithoutReading(), 0);

    EXPECT_EQ(complaints(), "");
    EXPECT_EQ(journaledNames().size(), static_cast<std::size_t>(count));
}

TEST_F(WatchCommandEnd, LetsASlowReaderReadEverything)
{
    constexpr int count = 300;
    fileMyPapers();
    addPapers(count);
    home().makeFolder("Filed");
    FileEvents filed{home().path("Filed")};
    WatchProcess process{watch()};
    process.shrinkOutput();
    filed.waitFor("299.pdf");

    process.readUntil("299.pdf -> ");

    EXPECT_THAT(process.linesWith("  Filed  "), testing::SizeIs(count));
    EXPECT_EQ(process.end(), 0);
    EXPECT_TRUE(process.lines().back().ends_with("  Stopped"));
}

/// Standard output that takes nothing.
struct BadOutput {
    const char* name;
    const char* file;
    const char* complaint;

    friend void PrintTo(const BadOutput& output, std::ostream* stream) { *stream << output.name; }
};

class WatchCommandOutput : public WatchFixture, public testing::WithParamInterface<BadOutput> { };

INSTANTIATE_TEST_SUITE_P(Outputs, WatchCommandOutput,
    testing::Values(BadOutput{"closed", "", "Bad file descriptor"},
        BadOutput{"full", "/dev/full", "No space left on device"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST_P(WatchCommandOutput, ThatTakesNothingIsToldOnceAndSweepingGoesOn)
{
    fileMyPapers();
    addPapers(3);
    home().makeFolder("Filed");
    FileEvents filed{home().path("Filed")};
    ProgramStart how = watch();
    how.outputFile = GetParam().file;
    ProgramProcess process{how};
    filed.waitFor("002.pdf");

    home().write("in/late.pdf", "L");
    filed.waitFor("late.pdf");

    process.signal(SIGTERM);
    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(complaints(),
        std::string{"tidemarkctl: cannot write to standard output: "} + GetParam().complaint
            + '\n');
    EXPECT_EQ(journaledNames().size(), 4U);
}

}  // namespace
}  // namespace tidemark
