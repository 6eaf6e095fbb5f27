#include "DefaultRules.h"
#include "OtherProcess.h"
#include "WatchFixture.h"

#include <chrono>
#include <cmath>
#include <filesystem>

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

/// The kernel stamps files by a clock that lags some milliseconds behind.
constexpr double stampLag = 0.02;

const std::string timeRegex = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}";

using WatchCommandOn = WatchOnBackend;

INSTANTIATE_TEST_SUITE_P(Backends, WatchCommandOn, bothBackends(), backendName);

TEST_P(WatchCommandOn, FilesAScreenshotThatAnotherProgramMakes)
{
    Settings settings = watching(
        {"Desktop"}, {DefaultRules::screenshots(home().makeFolder("Desktop/Screenshots"))});
    settings.gracePeriod = Seconds{0};
    writeSettings(settings);
    // Once this is filed, the look at what is due at the start is over.
    home().write("Desktop/Screenshot.png", "picture of before");
    WatchProcess process{watch()};
    process.readUntil("Screenshot.png -> ");

    otherProcess(
        "echo picture > '" + home().path("Desktop/Screenshot from 2026-11-21 09-13-30.png") + "'");
    const std::string line = process.readUntil("09-13-30.png");

    const std::string lead =
        timeRegex + "  Filed     Screenshot from 2026-11-21 09-13-30\\.png -> ";
    const std::string place =
        "~/Desktop/Screenshots/[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}\\.[0-9]{2}( 2)?\\.png";
    EXPECT_THAT(line, MatchesRegex(lead + place));
    EXPECT_EQ(home().read(line.substr(line.find("Desktop/"))), "picture\n");
    EXPECT_THAT(
        journaledNames(), ElementsAre("Screenshot from 2026-11-21 09-13-30.png", "Screenshot.png"));
    EXPECT_THAT(run({"activity"}).output, HasSubstr("Screenshot from 2026-11-21 09-13-30.png"));
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(complaints(), "");
}

TEST_P(WatchCommandOn, SweepsAFileThatRestsWhenItsGracePeriodIsOver)
{
    constexpr double grace = 2;
    fileMyPapers(Seconds{grace});
    WatchProcess process{watch()};
    process.readStart();

    otherProcess("echo A > " + home().path("in/a.pdf"));
    process.readUntil("a.pdf -> ~/Filed/a.pdf");

    EXPECT_GE(movedAt("Filed/a.pdf"), writtenAt("Filed/a.pdf") + grace - stampLag);
    const Date journaled = journal().sweeps.at(0).entries.at(0).at;
    EXPECT_GE(journaled.time_since_epoch().count(), std::floor(writtenAt("Filed/a.pdf") + grace));
    EXPECT_EQ(process.end(), 0);
}

TEST_P(WatchCommandOn, LeavesAFileAloneWhileItIsWritten)
{
    constexpr double grace = 1;
    fileMyPapers(Seconds{grace});
    WatchProcess process{watch()};
    process.readStart();

    for (const char* part : {"1", "2", "3", "4", "5"}) {
        otherProcess("echo " + std::string{part} + " >> " + home().path("in/a.pdf"));
        EXPECT_EQ(run({"sweep"}).output, "Nothing to do: no file waits to be tidied.\n");
    }
    process.readUntil("a.pdf -> ~/Filed/a.pdf");

    EXPECT_GE(movedAt("Filed/a.pdf"), writtenAt("Filed/a.pdf") + grace - stampLag);
    EXPECT_EQ(home().read("Filed/a.pdf"), "1\n2\n3\n4\n5\n");
    EXPECT_EQ(process.end(), 0);
}

TEST_P(WatchCommandOn, NeverTouchesAnUnfinishedDownloadUntilItHasItsName)
{
    Settings settings = watching({"in"},
        {{.name = "Everything",
            .match = {},
            .action =
                RuleAction::fixed(SweepAction::move(FileURL::directory(home().path("Filed"))))}});
    settings.gracePeriod = Seconds{0};
    writeSettings(settings);
    home().write("in/x.pdf.part", "X");
    home().write("in/1.pdf", "1");
    WatchProcess process{watch()};
    process.readUntil("1.pdf -> ~/Filed/1.pdf");
    otherProcess("echo 2 > " + home().path("in/2.pdf"));
    process.readUntil("2.pdf -> ~/Filed/2.pdf");
    EXPECT_THAT(home().names("in"), ElementsAre("x.pdf.part"));

    otherProcess("mv " + home().path("in/x.pdf.part") + ' ' + home().path("in/x.pdf"));
    process.readUntil("x.pdf -> ~/Filed/x.pdf");

    EXPECT_THAT(process.linesWith(".part"), IsEmpty());
    EXPECT_THAT(home().names("Filed"), ElementsAre("1.pdf", "2.pdf", "x.pdf"));
    EXPECT_EQ(process.end(), 0);
}

class WatchCommand : public WatchFixture { };

TEST_F(WatchCommand, SweepsWhatTurnedOldEnoughWhileNothingRan)
{
    fileMyPapers();
    addPapers(2);

    WatchProcess process{watch()};
    process.readUntil("001.pdf -> ~/Filed/001.pdf");

    EXPECT_THAT(home().names("in"), IsEmpty());
    EXPECT_THAT(home().names("Filed"), ElementsAre("000.pdf", "001.pdf"));
    EXPECT_EQ(process.end(), 0);
    EXPECT_THAT(process.lines().back(), MatchesRegex(timeRegex + "  Stopped"));
}

TEST_F(WatchCommand, TellsAtTheStartWhatItWatches)
{
    Settings settings = watching({"in", "Papers"}, {filingPapers()});
    settings.gracePeriod = Seconds{1};
    writeSettings(settings);
    std::filesystem::remove(home().path("in"));

    WatchProcess process{watch()};
    process.readStart();

    EXPECT_THAT(process.lines(),
        ElementsAre("Watching 2 folders", "  ~/in      cannot be read now", "  ~/Papers",
            "Files are left alone until they have rested for 1 second. Stop with Ctrl-C."));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommand, TellsAtTheStartHowToAddAFolderWhereThereIsNone)
{
    WatchProcess process{watch()};

    EXPECT_EQ(process.readUntil("folders add"),
        "No folders watched yet. Add one with: tidemarkctl folders add ~/Downloads");
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(complaints(), "");
}

class WatchCommandUsage : public WatchFixture { };

TEST_F(WatchCommandUsage, RefusesWhatItCannotDo)
{
    const std::vector<std::vector<std::string>> wrong{{"watch", "--json"},
        {"watch", "--now", "2024-05-03T14:05:00Z"}, {"watch", "extra"}, {"watch", "--backend", "x"},
        {"watch", "--backend"}, {"watch", "--limit", "5"}, {"status", "--backend", "inotify"},
        {"watch", "--backend", "inotify", "--backend", "inotify"}};
    for (const std::vector<std::string>& arguments : wrong) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.error, testing::StartsWith("tidemarkctl: "));
        EXPECT_THAT(outcome.error, HasSubstr("tidemarkctl --help"));
    }
    EXPECT_THAT(everything(), IsEmpty());
}

TEST_F(WatchCommandUsage, HasAHelpOfItsOwn)
{
    const Outcome outcome = run({"watch", "--help"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, testing::StartsWith("Usage: tidemarkctl watch"));
    EXPECT_THAT(run({"--help"}).output, HasSubstr("  watch"));
    EXPECT_THAT(everything(), IsEmpty());
}

class WatchCommandFirstStart : public WatchFixture {
protected:
    std::vector<std::string> watchedPaths() const
    {
        std::vector<std::string> paths;
        const QJsonArray folders = json({"status"}).object()["folders"].toArray();
        for (const QJsonValue folder : folders)
            paths.push_back(text(folder.toObject()["path"]));
        return paths;
    }
};

TEST_F(WatchCommandFirstStart, TakesDesktopAndDownloadsAndSaysSo)
{
    home().makeFolder("Desktop");
    home().makeFolder("Downloads");

    WatchProcess process{watch()};
    process.readStart();

    EXPECT_THAT(process.lines(),
        ElementsAre(
            "No folder was configured, so these are watched by the default rules. See them with: "
            "tidemarkctl folders",
            "Watching 2 folders", "  ~/Desktop", "  ~/Downloads",
            "Files are left alone until they have rested for 60 seconds. Stop with Ctrl-C."));
    EXPECT_THAT(watchedPaths(), ElementsAre(home().path("Desktop"), home().path("Downloads")));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandFirstStart, SweepsNothingBeforeSomethingHappens)
{
    home().write("Downloads/a.md", "note");
    otherProcess("touch -d '2 hours ago' " + home().path("Downloads/a.md"));
    WatchProcess process{watch()};
    process.readStart();

    home().write("Downloads/b.md", "note");
    process.readUntil("a.md -> ~/Downloads/Notes/");

    // A sweep of its own would have come before the second of quiet that follows the event.
    const std::string filed = journal().sweeps.at(0).entries.at(0).to;
    const double waited = movedAt(std::filesystem::relative(filed, home().path()).string())
        - writtenAt("Downloads/b.md");
    EXPECT_GE(waited, 1.0 - stampLag);
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandFirstStart, GoesByTheUsersDirectories)
{
    home().makeFolder("Schreibtisch");
    home().makeFolder("Desktop");
    home().makeFolder("Downloads");
    home().write("config/user-dirs.dirs",
        "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\nXDG_DOWNLOAD_DIR=\"$HOME/\"\n");

    WatchProcess process{watch()};
    process.readStart();

    EXPECT_THAT(watchedPaths(), ElementsAre(home().path("Schreibtisch")));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandFirstStart, TakesNothingThatIsMissing)
{
    home().write("config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/missing\"\n");

    WatchProcess process{watch()};
    process.readUntil("No folders watched yet");

    EXPECT_EQ(process.lines().size(), 2U);
    EXPECT_THAT(watchedPaths(), IsEmpty());
    EXPECT_FALSE(home().holds("Downloads"));
    EXPECT_EQ(process.end(), 0);
}

TEST_F(WatchCommandFirstStart, IsNotOneWhereFoldersAreConfigured)
{
    home().makeFolder("Desktop");
    fileMyPapers();
    const std::string before = home().read("data/Tidemark/settings.json");

    WatchProcess process{watch()};
    process.readStart();

    EXPECT_THAT(process.linesWith("No folder was configured"), IsEmpty());
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(home().read("data/Tidemark/settings.json"), before);
}

TEST_F(WatchCommandFirstStart, IsNotForOtherCommands)
{
    home().makeFolder("Desktop");
    home().makeFolder("Downloads");

    for (const char* command :
        {"status", "folders", "preview", "sweep", "activity", "undo", "pause", "resume"}) {
        EXPECT_EQ(run({command}).status, 0) << command;
        EXPECT_THAT(watchedPaths(), IsEmpty()) << command;
    }
}

TEST_F(WatchCommandFirstStart, DoesNotHappenWithSettingsThatCannotBeRead)
{
    home().makeFolder("Desktop");
    home().write("Desktop/a.md", "note");
    home().write("data/Tidemark/settings.json", R"({"folders":[{"path":7}]})");

    const Outcome outcome = run({"watch"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, testing::StartsWith("tidemarkctl: "));
    EXPECT_THAT(outcome.error, HasSubstr(supportPath("settings.json")));
    EXPECT_THAT(outcome.error, HasSubstr("folders[0].path"));
    EXPECT_EQ(home().read("data/Tidemark/settings.json"), R"({"folders":[{"path":7}]})");
    EXPECT_THAT(home().names("Desktop"), ElementsAre("a.md"));
    EXPECT_THAT(home().names("data/Tidemark"), ElementsAre("lock", "settings.json"));
}

}  // namespace
}  // namespace tidemark
