#include "Clock.h"
#include "JSONCoders.h"
#include "SupportLock.h"
#include "WatchFixture.h"

#include <sys/inotify.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <optional>
#include <regex>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

constexpr const char* inAMonth = "2100-01-02T03:04:05Z";

/// A home in which nothing is due now, but papers are for a sweep that is told a later time: so `watch` does
/// nothing by itself.
class RestingHome : public WatchFixture {
public:
    RestingHome()
    {
        Rule filing = filingPapers();
        filing.match.minAge = Seconds{30 * secondsPerDay};
        Settings settings = watching({"in", "second"}, {filing});
        settings.gracePeriod = Seconds{60};
        writeSettings(settings);
    }

    using WatchFixture::addPapers;
    using WatchFixture::contents;
    using WatchFixture::home;
    using WatchFixture::journal;
    using WatchFixture::journaledNames;
    using WatchFixture::run;
    using WatchFixture::runIn;
    using WatchFixture::start;
    using WatchFixture::supportPath;
    using WatchFixture::watch;

    Settings savedSettings() const
    {
        return JSONCoders::decode<Settings>(home().read("data/Tidemark/settings.json"), "settings");
    }

    /// For a home beside that of the test.
    void TestBody() override { }
};

/// What was printed, without what differs from home to home and from second to second.
std::string normalised(const std::string& text, const RestingHome& home)
{
    static const std::regex id{"[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}"};
    static const std::regex time{"20[0-9]{2}-[0-9]{2}-[0-9]{2}[ T][0-9]{2}:[0-9]{2}(:[0-9]{2}Z?)?"};
    std::string result = std::regex_replace(text, std::regex{home.home().path()}, "HOME");
    result = std::regex_replace(result, id, "ID");
    return std::regex_replace(result, time, "TIME");
}

class WatchCommandRemote : public RestingHome { };

TEST_F(WatchCommandRemote, EveryCommandPrintsWhatItPrintsWithoutIt)
{
    const RestingHome without;
    for (const RestingHome* each : {static_cast<const RestingHome*>(this), &without}) {
        each->addPapers(3);
        each->home().write("second/a.pdf", "second/a.pdf");
        each->home().makeFolder("new/inner");
        each->home().write("file", "");
    }
    WatchProcess process{watch()};
    process.readStart();

    const auto expectSame = [&](const std::vector<std::string>& command,
                                const std::string& folder) {
        SCOPED_TRACE(testing::PrintToString(command) + " in " + folder);
        const Outcome local = without.runIn(without.home().path(folder), command);
        const Outcome remote = runIn(home().path(folder), command);
        EXPECT_EQ(remote.status, local.status);
        EXPECT_EQ(normalised(remote.output, *this), normalised(local.output, without));
        EXPECT_EQ(normalised(remote.error, *this), normalised(local.error, without));
    };
    const auto expectSameFiles = [&](const char* when) {
        for (const char* folder : {"in", "second", "Filed", "new"})
            EXPECT_EQ(contents({folder}), without.contents({folder})) << folder << ' ' << when;
    };
    const std::vector<std::vector<std::string>> beforeSweep{{"status"}, {"folders"}, {"preview"},
        {"preview", "--now", inAMonth}, {"sweep"}, {"undo"}, {"activity"}};
    const std::vector<std::vector<std::string>> sweeps{{"sweep", "--now", inAMonth},
        {"sweep", "--now", inAMonth}, {"status"}, {"activity"}, {"activity", "--limit", "2"}};
    const std::vector<std::vector<std::string>> undos{{"undo", "--now", inAMonth}, {"undo"},
        {"activity"}, {"status"}, {"sweep", "--now", inAMonth}, {"resume"}, {"resume"}, {"pause"},
        {"pause"}, {"status"}, {"resume"}};
    const std::vector<std::vector<std::string>> folders{{"folders", "add", "inner"},
        {"folders", "add", "inner", ".", "./inner/../inner"}, {"folders", "list"},
        {"folders", "add", "missing"}, {"folders", "add", "../file"},
        {"folders", "add", "../data/Tidemark"}, {"folders", "remove", "missing"},
        {"folders", "remove", "inner"}, {"folders", "remove", "inner"}, {"folders", "remove", "."},
        {"status"}};

    for (const bool json : {false, true}) {
        SCOPED_TRACE(json ? "with --json" : "without --json");
        const auto runAll = [&](const std::vector<std::vector<std::string>>& commands,
                                const std::string& folder) {
            for (std::vector<std::string> command : commands) {
                if (json)
                    command.emplace_back("--json");
                expectSame(std::move(command), folder);
            }
        };
        runAll(beforeSweep, "");
        runAll(sweeps, "");
        expectSameFiles("after the sweep");
        runAll(undos, "");
        expectSameFiles("after the undo");
        runAll(folders, "new");
    }
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandRemote, AFailurePrintsWhatItPrintsWithoutIt)
{
    const RestingHome without;
    for (const RestingHome* each : {static_cast<const RestingHome*>(this), &without}) {
        each->addPapers(2);
        each->home().write("Filed", "no folder");
    }
    WatchProcess process{watch()};
    process.readStart();
    const auto expectSameFailure = [&](const std::vector<std::string>& command) {
        const Outcome local = without.run(command);
        const Outcome remote = run(command);
        EXPECT_EQ(local.status, 1);
        EXPECT_EQ(remote.status, 1);
        EXPECT_EQ(normalised(remote.output, *this), normalised(local.output, without));
        EXPECT_EQ(normalised(remote.error, *this), normalised(local.error, without));
    };

    expectSameFailure({"sweep", "--now", inAMonth});
    for (const RestingHome* each : {static_cast<const RestingHome*>(this), &without}) {
        fs::remove(each->home().path("Filed"));
        each->home().write("data/Tidemark/journal.json", "{torn");
    }
    expectSameFailure({"sweep", "--now", inAMonth});
    expectSameFailure({"undo"});
    for (const RestingHome* each : {static_cast<const RestingHome*>(this), &without})
        fs::remove(each->home().path("second"));
    expectSameFailure({"sweep", "--now", inAMonth});

    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandRemote, AnAddedFolderIsWatchedFromThenOnAndARemovedOneNoMore)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.gracePeriod = Seconds{0};
    writeSettings(settings);
    home().makeFolder("new/inner");
    WatchProcess process{watch()};
    process.readStart();

    EXPECT_EQ(runIn(home().path("new"), {"folders", "add", "inner"}).status, 0);
    process.readUntil("Watching 2 folders");
    home().write("new/inner/a.md", "A");
    process.readUntil("a.md -> ~/new/inner/Notes/");

    EXPECT_EQ(runIn(home().path("new"), {"folders", "remove", "inner"}).status, 0);
    process.readUntil("Watching 1 folder");
    home().write("new/inner/b.md", "B");
    home().write("in/c.pdf", "C");
    process.readUntil("c.pdf -> ~/Filed/c.pdf");
    EXPECT_TRUE(home().holds("new/inner/b.md"));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandRemote, PauseStopsSweepingAndResumeSweepsWhatIsDue)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.isPaused = true;
    writeSettings(settings);
    addPapers(1);
    WatchProcess process{watch()};
    process.readUntil("Stop with");
    EXPECT_THAT(process.linesWith("Resume with: tidemarkctl resume"), testing::SizeIs(1));
    EXPECT_THAT(run({"sweep"}).output, HasSubstr("Sweeping is paused; nothing was done."));
    EXPECT_TRUE(home().holds("in/000.pdf"));
    const Date resumed = SystemClock{}.now();

    EXPECT_EQ(run({"resume"}).output, "Sweeping goes on.\n");
    process.readUntil("000.pdf -> ~/Filed/000.pdf");

    EXPECT_GE(movedAt("Filed/000.pdf"), resumed.time_since_epoch().count() - 0.02);
    EXPECT_THAT(process.linesWith("Watching 1 folder"), testing::SizeIs(1));
    EXPECT_EQ(run({"pause"}).status, 0);
    EXPECT_TRUE(process.readUntil("Paused").ends_with("  Paused"));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandRemote, PrintsWhatAnUndoRestores)
{
    addPapers(2);
    WatchProcess process{watch()};
    process.readStart();
    ASSERT_EQ(run({"sweep", "--now", inAMonth}).status, 0);
    process.readUntil("001.pdf -> ~/Filed/001.pdf");

    ASSERT_EQ(run({"undo"}).status, 0);

    EXPECT_TRUE(process.nextLine().ends_with("  Paused"));
    EXPECT_TRUE(process.nextLine().ends_with("  Restored  001.pdf -> ~/in/001.pdf"));
    EXPECT_TRUE(process.nextLine().ends_with("  Restored  000.pdf -> ~/in/000.pdf"));
    EXPECT_EQ(contents({"in"}).size(), 2U);
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandRemote, AClientThatIsKilledDisturbsNothing)
{
    constexpr int count = 300;
    addPapers(count);
    WatchProcess process{watch()};
    process.readStart();
    ProgramProcess client{start({"sweep", "--now", inAMonth})};
    process.readUntil("004.pdf -> ");

    client.signal(SIGKILL);

    EXPECT_EQ(client.wait(), -SIGKILL);
    process.readUntil("299.pdf -> ");
    EXPECT_EQ(run({"undo"}).status, 0);
    EXPECT_EQ(contents({"in"}).size(), static_cast<std::size_t>(count));
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(complaints(), "");
}

TEST_F(WatchCommandRemote, AClientLearnsThatItWasKilled)
{
    addPapers(1000);
    WatchProcess process{watch()};
    process.readStart();
    ProgramStart how = start({"sweep", "--now", inAMonth});
    how.errorFile = home().path("client-errors");
    ProgramProcess client{how};
    process.readUntil("004.pdf -> ");

    EXPECT_EQ(process.end(SIGKILL), -SIGKILL);

    EXPECT_EQ(client.wait(), 1);
    EXPECT_EQ(home().read("client-errors"),
        "tidemarkctl: Tidemark ended before it was done; \"tidemarkctl activity\" shows what was "
        "done\n");
    EXPECT_EQ(run({"undo"}).status, 0) << "the socket that is left blocks nobody";
    EXPECT_EQ(contents({"in"}).size(), 1000U);
}

TEST_F(WatchCommandRemote, AClientIsAnsweredBeforeItEnds)
{
    addPapers(1000);
    WatchProcess process{watch()};
    process.readStart();
    ProgramStart how = start({"sweep", "--json", "--now", inAMonth});
    how.outputFile = home().path("answer");
    how.errorFile = home().path("answer-errors");
    home().write("answer-errors", "");
    ProgramProcess client{how};
    process.readUntil("004.pdf -> ");

    EXPECT_EQ(process.end(), 0);

    EXPECT_EQ(client.wait(), 1);
    EXPECT_EQ(
        home().read("answer-errors"), "tidemarkctl: the sweep was stopped before it was done\n");
    const qsizetype told = parsed(home().read("answer")).object()["entries"].toArray().size();
    EXPECT_EQ(static_cast<std::size_t>(told), home().names("Filed").size());
    EXPECT_LT(told, 1000) << "the sweep was over before it could be ended";
}

TEST_F(WatchCommandRemote, CommandsAtTheSameTimeAllTakeEffect)
{
    WatchProcess process{watch()};
    process.readStart();
    for (int round = 0; round < 3; ++round) {
        std::deque<ProgramProcess> clients;
        for (int i = 0; i < 6; ++i) {
            const std::string folder = std::to_string(round) + std::to_string(i);
            home().makeFolder(folder);
            clients.emplace_back(start({"folders", "add", folder}));
        }
        clients.emplace_back(start({"pause"}));
        clients.emplace_back(start({"resume"}));
        for (ProgramProcess& client : clients)
            EXPECT_EQ(client.wait(), 0);
    }

    EXPECT_EQ(process.end(), 0);
    std::set<std::string> paths;
    for (const WatchedFolder& folder : savedSettings().folders)
        paths.insert(folder.path);
    EXPECT_EQ(paths.size(), 2U + 3 * 6);
    EXPECT_EQ(savedSettings().folders.size(), paths.size());
}

class WatchCommandAlone : public RestingHome { };

TEST_F(WatchCommandAlone, IsThereOnlyOncePerSupportFolder)
{
    addPapers(1);
    WatchProcess process{watch()};
    process.readStart();
    const std::vector<std::string> before = everything();

    const Outcome second = run({"watch"});

    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.output, "");
    EXPECT_THAT(
        second.error, testing::MatchesRegex("tidemarkctl: Tidemark is running already.*\n"));
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(run({"sweep", "--now", inAMonth}).status, 0);
    process.readUntil("000.pdf -> ");
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandAlone, RunsBesideOneOfAnotherSupportFolder)
{
    // Longer than a socket's address can be.
    const std::string other = "support/" + std::string(200, 's');
    Settings settings = watching({"other"}, {filingPapers()});
    settings.gracePeriod = Seconds{0};
    home().write(other + "/settings.json", JSONCoders::encode(settings));
    addPapers(1, "other");
    WatchProcess process{watch()};
    process.readStart();

    ProgramStart how = watch({"--support", home().path(other)});
    how.errorFile = home().path("other-errors");
    WatchProcess beside{how};
    beside.readUntil("000.pdf -> ~/Filed/000.pdf");

    EXPECT_EQ(run({"--support", home().path(other), "pause"}).status, 0);
    beside.readUntil("Paused");
    EXPECT_EQ(run({"pause"}).status, 0);
    process.readUntil("Paused");
    EXPECT_EQ(beside.end(), 0);
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(home().read("other-errors"), "");
    EXPECT_FALSE(home().holds(other + "/socket"));
}

TEST_F(WatchCommandAlone, WaitsForAShortCommandThatHoldsTheLock)
{
    FileEvents tries{supportPath(), IN_OPEN};
    std::optional<SupportLock> held = SupportLock::acquire(FileURL::directory(supportPath()));
    WatchProcess process{watch()};
    tries.waitFor("lock", 3);

    held.reset();

    process.readStart();
    EXPECT_EQ(process.end(), 0);
}

}  // namespace
}  // namespace tidemark
