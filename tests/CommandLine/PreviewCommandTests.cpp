#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace tidemark {
namespace {

using testing::HasSubstr;

class PreviewCommand : public CommandLineFixture {
protected:
    QJsonArray actions(const std::vector<std::string>& arguments = {"preview"}) const
    {
        return json(arguments).object()["actions"].toArray();
    }
};

using Moves = std::vector<std::pair<std::string, std::string>>;

Moves movesOf(const QJsonArray& actions, const char* from, const char* to)
{
    Moves moves;
    for (const auto& each : actions) {
        const QJsonObject action = each.toObject();
        moves.emplace_back(text(action[QLatin1String(from)]), text(action[QLatin1String(to)]));
    }
    return moves;
}

TEST_F(PreviewCommand, HasExactlyTheDocumentedMembers)
{
    const Rule rule = filingPapers();
    writeSettings(watching({"in"}, {rule}));
    home().write("in/a.pdf", "A");

    const QJsonDocument document = json({"preview"});

    EXPECT_EQ(document.object().keys(), QStringList{u"actions"_qs});
    ASSERT_EQ(actions().size(), 1);
    const QJsonObject action = actions()[0].toObject();
    EXPECT_EQ(action.keys(),
        (QStringList{u"action"_qs, u"destination"_qs, u"ruleID"_qs, u"ruleName"_qs, u"source"_qs}));
    EXPECT_EQ(text(action["action"].toObject()["move"].toObject()["to"]),
        "file://" + home().path("Filed/"));
    EXPECT_EQ(text(action["destination"]), home().path("Filed/a.pdf"));
    EXPECT_EQ(
        text(action["ruleID"]), rule.id.toString(QUuid::WithoutBraces).toUpper().toStdString());
    EXPECT_EQ(text(action["ruleName"]), "File papers");
    EXPECT_EQ(text(action["source"]), home().path("in/a.pdf"));
}

TEST_F(PreviewCommand, GivesNoDestinationForTheTrashAndTheStampOfANote)
{
    Settings settings = watching({"in"},
        {{.name = "Trash",
            .match = {.fileTypes = {"dmg"}},
            .action = RuleAction::fixed(SweepAction::trash())}});
    settings.folders[0].sortsMarkdown = true;
    writeSettings(settings);
    home().write("in/a.dmg", "A");
    home().write("in/b.md", "---\ndate: 2024-05-03\n---\n");

    const QJsonArray rows = actions();

    ASSERT_EQ(rows.size(), 2);
    EXPECT_FALSE(rows[0].toObject().contains(u"destination"));
    EXPECT_TRUE(rows[0].toObject()["action"].toObject()["trash"].toObject().isEmpty());
    EXPECT_EQ(text(rows[1].toObject()["stampCreated"]), "2024-05-03T00:00:00Z");
}

TEST_F(PreviewCommand, NamesTheVeryPlacesThatTheSweepUses)
{
    // Two folders with the same names; a name taken before; a name that an earlier action frees.
    const Rule renaming{.name = "Rename",
        .match = {.namePattern = "old.txt"},
        .action = RuleAction::fixed(SweepAction::rename("new.txt"))};
    const Rule refilling{.name = "Refill",
        .match = {.fileTypes = {"log"}},
        .action = RuleAction::fixed(SweepAction::fileInto(home().makeFolder("one"), "old.txt"))};
    writeSettings(watching({"one", "two"}, {filingPapers(), renaming, refilling}));
    for (const char* name : {"one/a.pdf", "two/a.pdf", "Filed/a.pdf", "one/old.txt", "two/x.log",
             "two/y.log", "two/old.txt", "two/new.txt"})
        home().write(name, name);

    const Moves foreseen = movesOf(actions(), "source", "destination");
    const Moves done = movesOf(json({"sweep"}).object()["entries"].toArray(), "from", "to");

    EXPECT_EQ(foreseen, done);
    EXPECT_THAT(done,
        testing::IsSupersetOf(Moves{{home().path("one/a.pdf"), home().path("Filed/a 2.pdf")},
            {home().path("two/a.pdf"), home().path("Filed/a 3.pdf")},
            {home().path("one/old.txt"), home().path("one/new.txt")},
            {home().path("two/old.txt"), home().path("two/new 2.txt")},
            {home().path("two/x.log"), home().path("one/old.txt")},
            {home().path("two/y.log"), home().path("one/old 2.txt")}}));
    EXPECT_EQ(home().read("Filed/a.pdf"), "Filed/a.pdf");
}

TEST_F(PreviewCommand, ChangesNothing)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    const auto before = everything();

    EXPECT_EQ(run({"preview"}).status, 0);

    EXPECT_EQ(everything(), before);
}

TEST_F(PreviewCommand, TellsPeopleRuleNameAndPlace)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    home().write("in/longer name.pdf", "B");

    EXPECT_EQ(run({"preview"}).output,
        "~/in\n"
        "  File papers  a.pdf            -> ~/Filed/a.pdf\n"
        "  File papers  longer name.pdf  -> ~/Filed/longer name.pdf\n"
        "\n"
        "2 files would be moved. Do it with: tidemarkctl sweep\n");
}

TEST_F(PreviewCommand, ShowsWhatWouldHappenWhilePausedAndSaysSo)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.isPaused = true;
    writeSettings(settings);
    home().write("in/a.pdf", "A");

    const Outcome outcome = run({"preview"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, testing::StartsWith("Sweeping is paused"));
    EXPECT_THAT(outcome.output, HasSubstr("~/Filed/a.pdf"));
    EXPECT_EQ(actions().size(), 1);
}

TEST_F(PreviewCommand, ShowsWhatStandsInTheWay)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    home().write("Filed", "a file where the folder should be");

    const Outcome outcome = run({"preview"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("a.pdf  cannot be moved: cannot make a folder "));
    EXPECT_THAT(outcome.output, HasSubstr("0 files would be moved, 1 could not be.\n"));
    EXPECT_FALSE(actions()[0].toObject().contains(u"destination"));
}

TEST_F(PreviewCommand, LooksAtTheFoldersAsOfTheGivenTime)
{
    const Rule old{.name = "Old",
        .match = {.fileTypes = {"pdf"}, .minAge = Seconds{secondsPerDay}},
        .action = filingPapers().action};
    writeSettings(watching({"in"}, {old}));
    const FileURL file = home().write("in/a.pdf", "A");
    // 3 May 2024, 14:05:00 UTC.
    std::filesystem::last_write_time(file.path(),
        std::chrono::file_clock::from_sys(
            std::chrono::sys_seconds{std::chrono::seconds{1714745100}}));

    EXPECT_EQ(actions({"preview", "--now", "2024-05-04T14:04:59Z"}).size(), 0);
    EXPECT_EQ(actions({"preview", "--now", "2024-05-04T16:05:00+02:00"}).size(), 1);
}

TEST_F(PreviewCommand, SaysWhenThereIsNothingToDo)
{
    EXPECT_EQ(run({"preview"}).output,
        "No folders watched yet. Add one with: tidemarkctl folders add ~/Downloads\n");
    writeSettings(watching({"in"}, {filingPapers()}));
    EXPECT_EQ(run({"preview"}).output, "Nothing to do: no file waits to be tidied.\n");
    EXPECT_EQ(actions().size(), 0);
}

TEST_F(PreviewCommand, FailsForAFolderThatCannotBeRead)
{
    writeSettings(watching({"in"}, {}));
    std::filesystem::remove(home().path("in"));
    const auto before = everything();

    const Outcome outcome = run({"preview", "--json"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, HasSubstr(home().path("in") + ": No such file or directory\n"));
    EXPECT_EQ(everything(), before);
}

TEST_F(PreviewCommand, PrintsLongListsWhole)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    for (int number = 0; number < 1000; ++number)
        home().write("in/" + std::to_string(number) + ".pdf", "");

    EXPECT_EQ(actions().size(), 1000);
    EXPECT_EQ(std::ranges::count(run({"preview"}).output, '\n'), 1003);
}

}  // namespace
}  // namespace tidemark
