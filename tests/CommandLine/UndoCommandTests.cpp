#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class UndoCommand : public CommandLineFixture {
protected:
    /// Sweeps a.pdf, b.pdf and c.pdf from "in" into "Filed".
    void sweepThreePapers() const
    {
        writeSettings(watching({"in"}, {filingPapers()}));
        for (const char* name : {"in/a.pdf", "in/b.pdf", "in/c.pdf"})
            home().write(name, name);
        ASSERT_EQ(run({"sweep", "--now", "2030-01-02T03:04:05Z"}).status, 0);
    }

    bool isPaused() const { return json({"status"}).object()["isPaused"].toBool(); }
};

TEST_F(UndoCommand, RestoresEveryFileAndPausesSweeping)
{
    sweepThreePapers();

    const Outcome outcome = run({"undo"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
        "~/in\n"
        "  Restored  c.pdf  from ~/Filed/c.pdf\n"
        "  Restored  b.pdf  from ~/Filed/b.pdf\n"
        "  Restored  a.pdf  from ~/Filed/a.pdf\n"
        "\n"
        "Undid the sweep of 2030-01-02 03:04: 3 files restored.\n"
        "Sweeping is paused now, so that the files stay there. Resume with: tidemarkctl resume\n");
    EXPECT_EQ(home().read("in/a.pdf"), "in/a.pdf");
    EXPECT_TRUE(isPaused());
    EXPECT_FALSE(json({"status"}).object()["canUndo"].toBool(true));
}

TEST_F(UndoCommand, ReportsNewNamesAndWhatIsGone)
{
    sweepThreePapers();
    home().write("in/a.pdf", "another file");
    std::filesystem::remove(home().path("Filed/b.pdf"));

    const Outcome outcome = run({"undo"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(
        outcome.output, HasSubstr("Restored  a.pdf  as a 2.pdf, for its old name is taken"));
    EXPECT_THAT(outcome.output, HasSubstr("Gone      b.pdf  no longer at ~/Filed/b.pdf"));
    EXPECT_THAT(outcome.output, HasSubstr("2 files restored, 1 gone."));
    EXPECT_EQ(home().read("in/a.pdf"), "another file");
    EXPECT_EQ(home().read("in/a 2.pdf"), "in/a.pdf");
}

TEST_F(UndoCommand, TellsWhatIsGoneFromWhatIsBackAlready)
{
    sweepThreePapers();
    // As an undo leaves them that was killed after the first file; another is gone, and its name a folder's.
    std::filesystem::rename(home().path("Filed/c.pdf"), home().path("in/c.pdf"));
    std::filesystem::remove(home().path("Filed/b.pdf"));
    home().makeFolder("in/b.pdf");

    const Outcome outcome = run({"undo"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output,
        HasSubstr(
            "Back      c.pdf  no longer at ~/Filed/c.pdf, but a file of this name is here\n"));
    EXPECT_THAT(outcome.output, HasSubstr("Gone      b.pdf  no longer at ~/Filed/b.pdf\n"));
    EXPECT_THAT(
        outcome.output, HasSubstr(": 1 file restored, 1 seems to be back already, 1 gone.\n"));
}

TEST_F(UndoCommand, BringsFilesBackFromTheTrash)
{
    writeSettings(watching({"in"},
        {{.name = "Trash",
            .match = {.fileTypes = {"dmg"}},
            .action = RuleAction::fixed(SweepAction::trash())}}));
    home().write("in/a.dmg", "A");
    ASSERT_THAT(run({"sweep"}).output, HasSubstr("Trashed  a.dmg  -> Trash"));
    ASSERT_FALSE(home().holds("in/a.dmg"));

    EXPECT_THAT(run({"undo"}).output, HasSubstr("Restored  a.dmg  from the Trash"));

    EXPECT_EQ(home().read("in/a.dmg"), "A");
}

TEST_F(UndoCommand, JSONIsTheRecordThatWasUndone)
{
    sweepThreePapers();

    const QJsonObject record = json({"undo"}).object();

    EXPECT_EQ(text(record["startedAt"]), "2030-01-02T03:04:05Z");
    EXPECT_EQ(record["entries"].toArray().size(), 3);
}

TEST_F(UndoCommand, OfNothingSaysSoAndPausesNothing)
{
    EXPECT_EQ(run({"undo"}).output, "There is nothing to undo.\n");
    const Outcome outcome = run({"undo", "--json"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "null\n");
    EXPECT_FALSE(isPaused());
    EXPECT_FALSE(std::filesystem::exists(supportPath("settings.json")));
}

TEST_F(UndoCommand, GoesBackSweepBySweep)
{
    sweepThreePapers();
    home().write("in/d.pdf", "D");
    run({"sweep"});

    EXPECT_EQ(json({"undo"}).object()["entries"].toArray().size(), 1);
    EXPECT_EQ(json({"undo"}).object()["entries"].toArray().size(), 3);
    EXPECT_THAT(home().names("in"), ElementsAre("a.pdf", "b.pdf", "c.pdf", "d.pdf"));
}

TEST_F(UndoCommand, UndoesNothingWhenThePauseCannotBeSaved)
{
    sweepThreePapers();
    Settings settings = watching({"in"}, {filingPapers()});
    settings.markdownSubfolder = std::string(8192, 'n');
    writeSettings(settings);
    const auto before = everything();
    ProgramStart how = start({"undo"});
    how.largestFile = 4096;
    const TemporaryFolder streams;
    how.errorFile = streams.path("err");

    ProgramProcess process{how};

    EXPECT_EQ(process.wait(), 1);
    EXPECT_THAT(
        streams.read("err"), testing::ContainsRegex("settings\\.json.*: File too large\n$"));
    EXPECT_EQ(std::ranges::count(streams.read("err"), '\n'), 1);
    EXPECT_EQ(everything(), before);
}

TEST_F(UndoCommand, TellsHowFarItCameWhenItFails)
{
    sweepThreePapers();
    // A file now stands where the folder was.
    std::filesystem::remove(home().path("in"));
    home().write("in", "in the way");
    const Outcome outcome = run({"undo"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("0 files restored so far."));
    EXPECT_THAT(outcome.error, HasSubstr(home().path("in")));
    EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1);
    EXPECT_TRUE(json({"status"}).object()["canUndo"].toBool());

    std::filesystem::remove(home().path("in"));
    EXPECT_EQ(run({"undo"}).status, 0);
    EXPECT_THAT(home().names("in"), ElementsAre("a.pdf", "b.pdf", "c.pdf"));
}

}  // namespace
}  // namespace tidemark
