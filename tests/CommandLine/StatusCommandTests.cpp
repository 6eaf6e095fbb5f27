#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tidemark {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class StatusCommand : public CommandLineFixture { };

TEST_F(StatusCommand, OfAFreshHomeSaysWhatToDoAndMakesNothing)
{
    const Outcome outcome = run({"status"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith("No folders watched\n"));
    EXPECT_THAT(outcome.output, HasSubstr("tidemarkctl folders add ~/Downloads"));
    EXPECT_THAT(outcome.output, HasSubstr("There is nothing to undo."));
    EXPECT_THAT(everything(), testing::IsEmpty());
}

TEST_F(StatusCommand, JSONHasExactlyTheDocumentedMembers)
{
    Settings settings = watching({"a"}, {});
    settings.hasOnboarded = true;
    settings.folders.push_back(
        {.path = home().path("missing"), .rules = {}, .sortsMarkdown = true});
    writeSettings(settings);

    const QJsonObject status = json({"status"}).object();

    EXPECT_EQ(status.keys(),
        (QStringList{
            u"canUndo"_qs, u"folders"_qs, u"hasOnboarded"_qs, u"isPaused"_qs, u"statusText"_qs}));
    EXPECT_EQ(text(status["statusText"]), "Watching 2 folders");
    EXPECT_TRUE(status["hasOnboarded"].toBool());
    EXPECT_FALSE(status["isPaused"].toBool(true));
    EXPECT_FALSE(status["canUndo"].toBool(true));
    const QJsonObject readable = status["folders"].toArray()[0].toObject();
    EXPECT_EQ(readable.keys(), (QStringList{u"isGranted"_qs, u"path"_qs, u"sortsMarkdown"_qs}));
    EXPECT_EQ(text(readable["path"]), home().path("a"));
    EXPECT_TRUE(readable["isGranted"].toBool());
    EXPECT_FALSE(readable["sortsMarkdown"].toBool(true));
    const QJsonObject missing = status["folders"].toArray()[1].toObject();
    EXPECT_FALSE(missing["isGranted"].toBool(true));
    EXPECT_TRUE(missing["sortsMarkdown"].toBool());
}

TEST_F(StatusCommand, TellsWhyAFolderCannotBeRead)
{
    Settings settings = watching({"fine"}, {});
    home().write("file", "");
    home().makeLink("loop", "loop");
    home().makeLink("linked", "fine");
    for (const char* name : {"missing", "file", "loop", "linked"})
        settings.folders.push_back({.path = home().path(name), .rules = {}});
    writeSettings(settings);

    const std::string output = run({"status"}).output;

    EXPECT_THAT(output, StartsWith("Watching 5 folders\n"));
    EXPECT_THAT(output, HasSubstr("  ~/fine     can be read\n"));
    EXPECT_THAT(output, HasSubstr("  ~/missing  cannot be read: No such file or directory\n"));
    EXPECT_THAT(output, HasSubstr("  ~/file     cannot be read: Not a directory\n"));
    EXPECT_THAT(
        output, HasSubstr("  ~/loop     cannot be read: Too many levels of symbolic links\n"));
    EXPECT_THAT(output, HasSubstr("  ~/linked   can be read\n"));
}

TEST_F(StatusCommand, TellsWhyTheLastSweepFailedUntilOneWorks)
{
    writeSettings(watching({"in"}, {}));
    std::filesystem::remove(home().path("in"));
    ASSERT_EQ(run({"sweep", "--now", "2024-05-03T14:05:00Z"}).status, 1);

    const std::string line = "The last sweep failed (2024-05-03 14:05): ";
    EXPECT_THAT(run({"status"}).output, HasSubstr(line));
    EXPECT_THAT(run({"status"}).output, HasSubstr(home().path("in") + ": No such file"));

    home().makeFolder("in");
    ASSERT_EQ(run({"sweep"}).status, 0);
    EXPECT_THAT(run({"status"}).output, testing::Not(HasSubstr(line)));
}

TEST_F(StatusCommand, KnowsWhetherUndoIsPossible)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    run({"sweep"});

    EXPECT_TRUE(json({"status"}).object()["canUndo"].toBool());
    EXPECT_THAT(run({"status"}).output, HasSubstr("can be undone with: tidemarkctl undo"));
}

TEST_F(StatusCommand, UsesAnotherSupportFolder)
{
    writeSettings(watching({"in"}, {}));
    home().makeFolder("other");
    std::filesystem::copy(supportPath("settings.json"), home().path("other"));
    std::filesystem::remove_all(supportPath());

    EXPECT_EQ(text(json({"status"}).object()["statusText"]), "No folders watched");
    EXPECT_EQ(
        text(json({"--support", "other", "status"}).object()["statusText"]), "Watching 1 folder");
    EXPECT_EQ(text(json({"status", "--support=" + home().path("other/")}).object()["statusText"]),
        "Watching 1 folder");
}

TEST_F(StatusCommand, RefusesAFileInPlaceOfTheSupportFolder)
{
    home().write("file", "");

    const Outcome outcome = run({"status", "--support", "file"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error,
        "tidemarkctl: cannot use the support folder " + home().path("file")
            + ": Not a directory\n");
}

}  // namespace
}  // namespace tidemark
