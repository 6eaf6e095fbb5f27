#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SweepCommand : public CommandLineFixture { };

TEST_F(SweepCommand, FilesAndTellsEachFile)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    home().write("in/b.txt", "B");

    const Outcome outcome = run({"sweep"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output,
        "~/in\n"
        "  Filed  a.pdf  -> ~/Filed/a.pdf\n"
        "\n"
        "Moved 1 file. Undo with: tidemarkctl undo\n");
    EXPECT_EQ(home().read("Filed/a.pdf"), "A");
    EXPECT_THAT(home().names("in"), ElementsAre("b.txt"));
}

TEST_F(SweepCommand, JSONIsTheRecordThatTheJournalHolds)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");

    const QJsonObject record = json({"sweep", "--now", "2030-01-02T03:04:05Z"}).object();

    EXPECT_EQ(text(record["startedAt"]), "2030-01-02T03:04:05Z");
    const QJsonObject journal = parsed(home().read("data/Tidemark/journal.json")).object();
    EXPECT_EQ(journal["sweeps"].toArray(), QJsonArray{record});
}

TEST_F(SweepCommand, TouchesNothingWhilePausedAndSaysSo)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.isPaused = true;
    writeSettings(settings);
    home().write("in/a.pdf", "A");

    const Outcome outcome = run({"sweep"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        outcome.output, "Sweeping is paused; nothing was done. Resume with: tidemarkctl resume\n");
    EXPECT_TRUE(json({"sweep"}).object()["entries"].toArray().isEmpty());
    EXPECT_THAT(home().names("in"), ElementsAre("a.pdf"));
    EXPECT_FALSE(std::filesystem::exists(supportPath("journal.json")));
}

TEST_F(SweepCommand, ReportsFilesThatCannotBeMovedAndGoesOn)
{
    const Rule blocked{.name = "Blocked",
        .match = {.fileTypes = {"txt"}},
        .action = RuleAction::fixed(SweepAction::move(FileURL::directory(home().path("blocked"))))};
    writeSettings(watching({"in"}, {filingPapers(), blocked}));
    home().write("blocked", "a file where the folder should be");
    home().write("in/a.txt", "A");
    home().write("in/b.pdf", "B");

    const Outcome outcome = run({"sweep"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("  Filed   b.pdf  -> ~/Filed/b.pdf\n"));
    EXPECT_THAT(outcome.output, HasSubstr("  Failed  a.txt  "));
    EXPECT_THAT(outcome.error,
        testing::StartsWith("tidemarkctl: 1 of 2 files could not be moved, first: "
            + home().path("in/a.txt") + ": "));
    EXPECT_THAT(outcome.error, HasSubstr(home().path("blocked")));
    EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1);
    EXPECT_THAT(home().names("in"), ElementsAre("a.txt"));
    EXPECT_THAT(run({"status"}).output, HasSubstr("The last sweep failed"));
}

TEST_F(SweepCommand, MovesNothingWhenOneFolderCannotBeRead)
{
    writeSettings(watching({"in", "gone"}, {filingPapers()}));
    std::filesystem::remove(home().path("gone"));
    home().write("in/a.pdf", "A");

    const Outcome outcome = run({"sweep"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, HasSubstr(home().path("gone") + ": No such file or directory\n"));
    EXPECT_THAT(home().names("in"), ElementsAre("a.pdf"));
}

TEST_F(SweepCommand, SaysWhenThereIsNothingToDo)
{
    EXPECT_THAT(run({"sweep"}).output, testing::StartsWith("No folders watched yet."));
    writeSettings(watching({"in"}, {filingPapers()}));
    EXPECT_EQ(run({"sweep"}).output, "Nothing to do: no file waits to be tidied.\n");
}

TEST_F(SweepCommand, WorksInAnotherSupportFolderWhichItMakesForTheUserAlone)
{
    home().makeFolder("in");

    EXPECT_EQ(run({"--support", "deep/other", "folders", "add", "in"}).status, 0);

    EXPECT_TRUE(home().holds("deep/other/settings.json"));
    EXPECT_FALSE(std::filesystem::exists(supportPath()));
    EXPECT_EQ(std::filesystem::status(home().path("deep/other")).permissions(),
        std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace tidemark
