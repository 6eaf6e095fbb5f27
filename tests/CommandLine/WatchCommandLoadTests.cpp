#include "OtherProcess.h"
#include "ProgramUnderTest.h"
#include "WatchFixture.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
constexpr bool isSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSanitized = false;
#endif

/// The largest part of its memory that a process has ever had in use.
std::size_t peakMemory(pid_t process)
{
    std::ifstream status{"/proc/" + std::to_string(process) + "/status"};
    for (std::string word; status >> word;) {
        std::size_t kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes)
            return kilobytes << 10U;
    }
    return 0;
}

class WatchCommandLoad : public WatchOnBackend { };

INSTANTIATE_TEST_SUITE_P(Backends, WatchCommandLoad, bothBackends(), backendName);

TEST_P(WatchCommandLoad, ManyFilesAtOnceMakeFewSweepsAndTakeLittleMemory)
{
    constexpr std::size_t mebibyte = 1 << 20;
    Settings settings = watching({"in"},
        {{.name = "Blocked",
             .match = {.fileTypes = {"txt"}},
             .action =
                 RuleAction::fixed(SweepAction::move(FileURL::directory(home().path("blocked"))))},
            filingPapers()});
    writeSettings(settings);
    // Each sweep fails to move this one, and notes that.
    home().write("blocked", "no folder");
    home().write("in/counts.txt", "");
    FileEvents notes{supportPath()};
    const auto start = std::chrono::steady_clock::now();
    WatchProcess process{watch()};
    process.readUntil("  Failed  ");

    otherProcess("cd " + home().path("in") + "; seq -f 'file %05g' 20000 | xargs -d '\\n' touch");
    home().write("in/a.pdf", "A");
    process.readUntil("a.pdf -> ~/Filed/a.pdf");

    // One at the start, and each other after a second of quiet, of which a busy machine may make more than one.
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
    EXPECT_LE(notes.count("last-failure.json"), 1 + waited.count());
    // A sanitizer needs many times what the program does.
    EXPECT_LT(peakMemory(process.pid()), (isSanitized ? 1024 : 64) * mebibyte);
    EXPECT_EQ(home().names("in").size(), 20001U);
    EXPECT_EQ(process.end(), 0);
}

class WatchCommandRace : public WatchFixture {
protected:
    /// Moves one of the papers into "elsewhere", if it is still there.
    void takeAway(int index) const
    {
        const std::string name = '/' + std::to_string(1000 + index).substr(1) + ".pdf";
        std::error_code gone;
        fs::rename(home().path("in" + name), home().path("elsewhere" + name), gone);
    }

    /// Which of the papers a line is about.
    static int indexIn(const std::string& line)
    {
        const auto at = line.find(".pdf");
        return at == std::string::npos ? 0 : std::stoi(line.substr(at - 3, 3));
    }
};

TEST_F(WatchCommandRace, WithAnotherProgramLosesNothing)
{
    constexpr int count = 600;
    fileMyPapers();
    addPapers(count);
    home().makeFolder("elsewhere");
    const std::multiset<std::string> before = contents({"in"});
    WatchProcess process{watch()};
    process.readUntil("002.pdf -> ");

    home().write("in/last.pdf", "last");
    for (std::string line; line.find("last.pdf") == std::string::npos; line = process.nextLine()) {
        // What the sweep has just come to, or is about to.
        for (int ahead : {1, 2, 3, 5})
            takeAway(indexIn(line) + ahead);
    }

    std::multiset<std::string> all = contents({"in", "elsewhere", "Filed"});
    EXPECT_EQ(all.erase("last"), 1U);
    EXPECT_EQ(all, before);
    EXPECT_FALSE(home().names("elsewhere").empty()) << "the sweep was over before";
    EXPECT_FALSE(contents({"Filed"}).empty());
    EXPECT_EQ(process.end(), 0);
    while (!journal().sweeps.empty())
        ASSERT_EQ(run({"undo"}).status, 0);
    all = contents({"in", "elsewhere"});
    EXPECT_EQ(all.erase("last"), 1U);
    EXPECT_EQ(all, before);
}

class WatchCommandNetwork : public WatchFixture {
protected:
    static constexpr const char* strace = "/usr/bin/strace";

    bool canTrace() const
    {
        if (!fs::exists(strace))
            return false;
        ProgramStart how = start({"-o", "/dev/null", programUnderTest(TIDEMARKCTL), "--version"});
        how.path = strace;
        how.environment["ASAN_OPTIONS"] = "detect_leaks=0";
        return ProgramProcess{how}.wait() == 0;
    }
};

TEST_F(WatchCommandNetwork, IsNeverUsed)
{
    const std::string calls = home().path("calls");
    if (!canTrace())
        GTEST_SKIP() << "no strace, or it may not trace";
    fileMyPapers();
    addPapers(1);
    ProgramStart how = watch();
    how.arguments.insert(
        how.arguments.begin(), {"-f", "-qq", "-e", "trace=socket,connect", "-o", calls, how.path});
    how.path = strace;
    how.environment["ASAN_OPTIONS"] = "detect_leaks=0";  // cannot be done while it is traced
    WatchProcess process{how};
    process.readUntil("000.pdf -> ");
    EXPECT_EQ(run({"sweep"}).status, 0);
    process.stopReading();
    EXPECT_EQ(run({"pause"}).status, 0);

    EXPECT_EQ(process.wait(), 0);

    const std::string made = home().read("calls");
    EXPECT_THAT(made, testing::HasSubstr("AF_UNIX"));
    EXPECT_THAT(made, testing::Not(testing::HasSubstr("AF_INET")));
    EXPECT_THAT(made, testing::Not(testing::HasSubstr("AF_NETLINK")));
}

}  // namespace
}  // namespace tidemark
